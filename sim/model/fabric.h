/* SPDX-License-Identifier: MIT
 *
 * The switching fabric: where a frame that came in goes.
 */
#ifndef SIM_FABRIC_H
#define SIM_FABRIC_H

#include <functional>
#include <set>
#include <tuple>

#include "port.h"

namespace sim
{

constexpr uint32_t MAX_VLAN = 4094;

/* How a member of a VLAN sends its frames out. */
enum class egress_tag { TAGGED, UNTAGGED };

class fabric
{
  public:
    /* with_room are the ports that take another frame to send; to_cpu is called for every frame that a CPU MAC or
     * static entry leads to the CPU, with the port that it came in on. */
    fabric(const port_set &with_room, std::function<void(const port &, const frame &)> to_cpu);

    /* Makes a port one of those that frames are flooded to, an untagged member of the default VLAN. */
    void attach(port &front);

    /* Takes a frame that arrived at a port. */
    void ingress(port &at, frame &&incoming);

    void add_cpu_mac(const mac_address &mac);
    /* False when there is no such entry. */
    bool remove_cpu_mac(const mac_address &mac);

    /* VLANs are 0 to MAX_VLAN. Joining again changes the tagging; leaving what one is not in changes nothing. */
    void join(uint32_t vlan, const port &member, egress_tag tagging);
    void leave(uint32_t vlan, const port &member);

    /* The address is the switch's own: frames to it that come in on that port in that VLAN go to the CPU. */
    void add_static(uint32_t vlan, const mac_address &mac, const port &at);
    /* False when there is no such entry. */
    bool remove_static(uint32_t vlan, const mac_address &mac, const port &at);

    /* While this lasts, untagged frames go to all ports, tagged ones nowhere. What a port floods is tagged, so a copy
     * that comes back in has come to its end. */
    bool broadcast_test = false;

    /* Sound frames that had nowhere to go. */
    uint64_t dropped() const
    {
        return dropped_;
    }

  private:
    struct vlan_entry {
        port_set members;
        port_set untagged;
    };

    void forward(const port &at, const frame &incoming);
    void flood_everywhere(const frame &incoming);

    const port_set &with_room_;
    std::function<void(const port &, const frame &)> to_cpu_;
    std::set<mac_address> cpu_macs_;
    std::set<std::tuple<const port *, uint32_t, mac_address>> statics_;
    std::vector<vlan_entry> vlans_{MAX_VLAN + 1};
    port_set front_;
    std::array<port *, FACMSG_MAX_PORTS + 1> by_number_{};
    uint64_t dropped_ = 0;
};

} // namespace sim

#endif
