/* SPDX-License-Identifier: MIT
 *
 * The board's time and what is still to happen in it.
 */
#ifndef SIM_EVENT_CLOCK_H
#define SIM_EVENT_CLOCK_H

#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <vector>

namespace sim
{

/* Microseconds of board time since power-up. */
using time_us = uint64_t;

class event_clock
{
  public:
    time_us now() const
    {
        return now_;
    }

    /* Calls action once, delay from now. Actions of the same moment run in the order in which they were ordered. */
    void after(time_us delay, std::function<void()> action);

    /* When the next action is due; nothing when none is pending. */
    std::optional<time_us> next() const;

    /* Moves to the next action that is due by limit and runs it. False, and the time is limit, when there is none. */
    bool step(time_us limit);

    /* Runs everything due by limit. */
    void run_until(time_us limit);

  private:
    struct event {
        time_us due;
        uint64_t order;
        std::function<void()> action;
    };
    struct later {
        bool operator()(const event &a, const event &b) const
        {
            return a.due != b.due ? a.due > b.due : a.order > b.order;
        }
    };

    time_us now_ = 0;
    uint64_t ordered_ = 0;
    std::priority_queue<event, std::vector<event>, later> pending_;
};

} // namespace sim

#endif
