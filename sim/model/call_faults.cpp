/* SPDX-License-Identifier: MIT
 *
 * Decides which calls of driver functions fail.
 */
#include "call_faults.h"

#include <utility>

namespace sim
{

call_faults::call_faults(std::vector<call_fault> faults)
{
    for (auto &fault : faults)
        faults_.push_back({std::move(fault), 0});
}

std::optional<int> call_faults::strike(std::string_view slot, std::optional<uint32_t> port)
{
    std::optional<int> result;
    for (auto &[fault, calls] : faults_) {
        if (fault.slot != slot || (fault.port && fault.port != port))
            continue;
        ++calls;
        const bool begun = calls >= fault.from_call;
        const bool over = fault.calls && calls >= uint64_t{fault.from_call} + fault.calls;
        if (begun && !over && !result)
            result = fault.result;
    }
    return result;
}

} // namespace sim
