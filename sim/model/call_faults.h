/* SPDX-License-Identifier: MIT
 *
 * Decides which calls of driver functions fail.
 */
#ifndef SIM_CALL_FAULTS_H
#define SIM_CALL_FAULTS_H

#include <optional>
#include <string_view>
#include <vector>

#include "board_config.h"

namespace sim
{

class call_faults
{
  public:
    explicit call_faults(std::vector<call_fault> faults);

    /* Counts a call of a slot, for a port when it has one. The value with which the call is to fail at once, or nothing
     * when it is to go on. */
    std::optional<int> strike(std::string_view slot, std::optional<uint32_t> port);

  private:
    struct counted_fault {
        call_fault fault;
        uint64_t calls;
    };
    std::vector<counted_fault> faults_;
};

} // namespace sim

#endif
