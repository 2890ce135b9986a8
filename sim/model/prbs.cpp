/* SPDX-License-Identifier: MIT
 *
 * The pseudo-random bit sequence that a port's PHY sends and checks.
 */
#include "prbs.h"

#include <algorithm>
#include <utility>

namespace sim
{

void prbs_run::start(time_us now)
{
    running_ = true;
    counted_from_ = now;
}

void prbs_run::stop()
{
    running_ = false;
}

uint32_t prbs_run::read_and_clear(bool locked, uint32_t errors_per_s, time_us now)
{
    const time_us counted = now - std::exchange(counted_from_, now);
    if (!running_ || !locked)
        return PRBS_NO_LOCK;
    return static_cast<uint32_t>(std::min<uint64_t>(counted * errors_per_s / 1000000, PRBS_NO_LOCK - 1));
}

} // namespace sim
