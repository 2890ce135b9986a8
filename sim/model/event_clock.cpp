/* SPDX-License-Identifier: MIT
 *
 * The board's time and what is still to happen in it.
 */
#include "event_clock.h"

#include <algorithm>
#include <utility>

namespace sim
{

void event_clock::after(time_us delay, std::function<void()> action)
{
    pending_.push({now_ + delay, ordered_++, std::move(action)});
}

std::optional<time_us> event_clock::next() const
{
    return pending_.empty() ? std::nullopt : std::optional(pending_.top().due);
}

bool event_clock::step(time_us limit)
{
    if (pending_.empty() || pending_.top().due > limit) {
        now_ = std::max(now_, limit);
        return false;
    }
    now_ = pending_.top().due;
    const auto action = std::move(const_cast<event &>(pending_.top()).action); /* top() is const for its order's sake */
    pending_.pop();
    action();
    return true;
}

void event_clock::run_until(time_us limit)
{
    while (step(limit)) {
    }
}

} // namespace sim
