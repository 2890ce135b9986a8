/* SPDX-License-Identifier: MIT
 *
 * The pseudo-random bit sequence that a port's PHY sends and checks.
 */
#ifndef SIM_PRBS_H
#define SIM_PRBS_H

#include "event_clock.h"

namespace sim
{

/* Status word: this bit when the checker has no sequence to lock on, the bit errors since the last reading below it. */
constexpr uint32_t PRBS_NO_LOCK = UINT32_C(1) << 31;

class prbs_run
{
  public:
    bool running() const
    {
        return running_;
    }
    void start(time_us now);
    void stop();

    /* The status word; counting starts anew. locked says whether a sequence comes in. */
    uint32_t read_and_clear(bool locked, uint32_t errors_per_s, time_us now);

  private:
    bool running_ = false;
    time_us counted_from_ = 0;
};

} // namespace sim

#endif
