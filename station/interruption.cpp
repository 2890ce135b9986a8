/* SPDX-License-Identifier: MIT
 *
 * SIGINT and SIGTERM are blocked, and a thread waits for them: it can leave at once whatever the others do.
 */
#include "interruption.h"

#include <atomic>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace station
{

using clock = std::chrono::steady_clock;

static std::atomic<bool> leave_at_once = true;
static std::atomic<int> noted = 0;
static std::atomic<clock::rep> noted_time = 0;

static void take_signals(sigset_t taken, pthread_t woken)
{
    for (int number = 0; sigwait(&taken, &number) == 0;) {
        if (leave_at_once || noted != 0)
            _exit(128 + number);
        noted_time = clock::now().time_since_epoch().count();
        noted = number;
        pthread_kill(woken, wake_up);
    }
}

void watch_signals(signal_policy policy)
{
    static bool watched = false;
    leave_at_once = policy == signal_policy::leave;
    if (watched)
        return;
    watched = true;
    sigset_t taken;
    sigemptyset(&taken);
    sigaddset(&taken, wake_up); /* blocked too: it may come when nobody waits for it */
    sigaddset(&taken, SIGINT);
    sigaddset(&taken, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &taken, nullptr);
    sigdelset(&taken, wake_up);
    std::thread(take_signals, taken, pthread_self()).detach();
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
