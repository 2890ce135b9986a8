/* SPDX-License-Identifier: MIT
 *
 * SIGINT and SIGTERM: noted, so that what is under way can be brought to an end, or obeyed at once.
 */
#include "interruption.h"

#include <atomic>
#include <csignal>
#include <unistd.h>

namespace station
{

using clock = std::chrono::steady_clock;

static_assert(std::atomic<int>::is_always_lock_free && std::atomic<clock::rep>::is_always_lock_free);

static std::atomic<bool> leave_at_once = true;
static std::atomic<int> noted = 0;
static std::atomic<clock::rep> noted_time = 0;

static void take_signal(int number)
{
    if (leave_at_once || noted != 0)
        _exit(128 + number);
    noted_time = clock::now().time_since_epoch().count();
    noted = number;
}

void watch_signals(signal_policy policy)
{
    leave_at_once = policy == signal_policy::leave;
    struct sigaction action {
    };
    action.sa_handler = take_signal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM})
        sigaction(number, &action, nullptr);
}

int noted_signal()
{
    return noted;
}

clock::time_point noted_at()
{
    return clock::time_point(clock::duration(noted_time));
}

exit_code noted_code()
{
    return noted == SIGTERM ? exit_code::terminated : exit_code::interrupted;
}

} // namespace station
