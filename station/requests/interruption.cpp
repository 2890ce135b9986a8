/* SPDX-License-Identifier: MIT
 *
 * The signals that interrupt are blocked, and a thread waits for them: it can leave at once whatever the others do.
 */
#include "interruption.h"

#include <atomic>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace station
{

using clock = std::chrono::steady_clock;

/* A time limit that signals the program and its group, or a terminal that closes, interrupts once but is heard twice.
 * Nobody presses a key twice as fast. */
static constexpr std::chrono::milliseconds ONE_INTERRUPTION{500};

static std::atomic<bool> leave_at_once = true;
static std::atomic<int> noted = 0;
static std::atomic<bool> line_is_open = false;
static std::atomic<clock::rep> noted_time = 0;

[[noreturn]] static void leave(int number)
{
    if (line_is_open && write(STDERR_FILENO, "\n", 1) < 0)
        _exit(128 + number); /* nobody reads it any longer */
    _exit(128 + number);
}

static void take_signals(sigset_t signals, pthread_t woken)
{
    for (int number = 0; sigwait(&signals, &number) == 0;) {
        const auto now = clock::now();
        if (leave_at_once || (noted != 0 && now >= noted_at() + ONE_INTERRUPTION))
            leave(number);
        if (noted != 0)
            continue;
        noted_time = now.time_since_epoch().count();
        noted = number;
        pthread_kill(woken, WAKE_UP);
    }
}

/* What nohup has made deaf to the end of its terminal stays so. */
static bool is_ignored(int number)
{
    struct sigaction action;
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void watch_signals(signal_policy policy)
{
    static bool watched = false;
    leave_at_once = policy == signal_policy::leave;
    if (watched)
        return;
    watched = true;
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, WAKE_UP); /* blocked too: it may come when nobody waits for it */
    for (const int number : {SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&signals, number);
    if (!is_ignored(SIGHUP))
        sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    sigdelset(&signals, WAKE_UP);
    std::thread(take_signals, signals, pthread_self()).detach();
}

open_line::open_line()
{
    line_is_open = true;
}

open_line::~open_line()
{
    line_is_open = false;
}

int noted_signal()
{
    return noted;
}

clock::time_point noted_at()
{
    return clock::time_point(clock::duration(noted_time));
}

common::exit_code noted_code()
{
    return static_cast<common::exit_code>(128 + noted);
}

void wait_for_wake_up(std::chrono::milliseconds most)
{
    const auto whole_s = std::chrono::duration_cast<std::chrono::seconds>(most);
    const timespec limit{static_cast<time_t>(whole_s.count()),
                         static_cast<long>(std::chrono::nanoseconds(most - whole_s).count())};
    sigset_t waited;
    sigemptyset(&waited);
    sigaddset(&waited, WAKE_UP);
    sigtimedwait(&waited, nullptr, &limit);
}

} // namespace station
