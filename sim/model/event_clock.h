/* SPDX-License-Identifier: MIT
 *
 * The board's time and what is still to happen in it.
 */
#ifndef SIM_EVENT_CLOCK_H
#define SIM_EVENT_CLOCK_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <utility>
#include <vector>

namespace sim
{

/* Microseconds of board time since power-up. */
using time_us = uint64_t;

/* For one thread at a time. An action may order others, but not move the clock. */
class event_clock
{
  public:
    time_us now() const
    {
        return now_;
    }

    /* Calls action once, delay from now. Actions of the same moment run in the order in which they were ordered. */
    void after(time_us delay, std::function<void()> action)
    {
        pending_.push({now_ + delay, ordered_++, std::move(action)});
    }

    /* When the next action is due; nothing when none is pending. */
    std::optional<time_us> next() const
    {
        return pending_.empty() ? std::nullopt : std::optional(pending_.top().due);
    }

    /* Moves to the next action that is due by limit and runs it. False, and the time is limit, when there is none. A
     * limit that has passed changes nothing. */
    bool step(time_us limit)
    {
        if (pending_.empty() || pending_.top().due > limit) {
            now_ = std::max(now_, limit);
            return false;
        }
        now_ = pending_.top().due;
        const auto action = std::move(const_cast<event &>(pending_.top()).action); /* const for its order's sake */
        pending_.pop();
        action();
        return true;
    }

    /* Runs everything due by limit. */
    void run_until(time_us limit)
    {
        while (step(limit)) {
        }
    }

  private:
    struct event {
        time_us due;
        uint64_t order;
        std::function<void()> action;
    };
    struct later {
        bool operator()(const event &a, const event &b) const
        {
            return std::pair(a.due, a.order) > std::pair(b.due, b.order);
        }
    };

    time_us now_ = 0;
    uint64_t ordered_ = 0;
    std::priority_queue<event, std::vector<event>, later> pending_;
};

} // namespace sim

#endif
