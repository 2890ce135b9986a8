/* SPDX-License-Identifier: MIT
 *
 * The switching fabric: where a frame that came in goes.
 */
#ifndef SIM_FABRIC_H
#define SIM_FABRIC_H

#include <array>
#include <functional>
#include <set>

#include "port.h"

namespace sim
{

using mac_address = std::array<uint8_t, 6>;

class fabric
{
  public:
    /* to_cpu is called for every frame that a CPU MAC entry catches, with the port that it came in on. */
    explicit fabric(std::function<void(const port &, const frame &)> to_cpu);

    /* Takes a frame that arrived at a port: the port's faults, the FCS check, then the CPU MAC entries. */
    void ingress(port &at, frame &&arrived);

    void add_cpu_mac(const mac_address &mac);
    /* False when there is no such entry. */
    bool remove_cpu_mac(const mac_address &mac);

    /* Sound frames that had nowhere to go. */
    uint64_t dropped() const
    {
        return dropped_;
    }

  private:
    std::function<void(const port &, const frame &)> to_cpu_;
    std::set<mac_address> cpu_macs_;
    uint64_t dropped_ = 0;
};

} // namespace sim

#endif
