/* SPDX-License-Identifier: MIT
 *
 * The switching fabric: where a frame that came in goes.
 */
#include "fabric.h"

#include <algorithm>
#include <utility>

namespace sim
{

static mac_address destination(const frame &f)
{
    mac_address mac;
    std::copy_n(f.bytes.begin(), mac.size(), mac.begin());
    return mac;
}

fabric::fabric(std::function<void(const port &, const frame &)> to_cpu) : to_cpu_(std::move(to_cpu)) {}

void fabric::ingress(port &at, frame &&arrived)
{
    if (!at.take_in(arrived))
        return;
    if (arrived.damaged)
        ++at.counters.fcs_errors;
    else if (cpu_macs_.count(destination(arrived)))
        to_cpu_(at, arrived);
    else
        ++dropped_;
}

void fabric::add_cpu_mac(const mac_address &mac)
{
    cpu_macs_.insert(mac);
}

bool fabric::remove_cpu_mac(const mac_address &mac)
{
    return cpu_macs_.erase(mac) != 0;
}

} // namespace sim
