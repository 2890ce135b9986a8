/* SPDX-License-Identifier: MIT
 *
 * SIGHUP, SIGINT, SIGQUIT and SIGTERM: noted, so that what is under way can be brought to an end, or obeyed at once.
 */
#ifndef STATION_INTERRUPTION_H
#define STATION_INTERRUPTION_H

#include <chrono>
#include <csignal>

#include "common/verdict.h"

namespace station
{

enum class signal_policy {
    leave, /* the first signal ends the program */
    note   /* the first is noted; one that comes half a second later, or after that, ends the program, wherever it is */
};

/* Blocked in the thread that watches, and sent to it when a signal was noted. */
constexpr int WAKE_UP = SIGUSR1;

/* What the signals do from now on. A program that they end has the exit code 128 and the signal's number. A SIGHUP that
 * was ignored when the program started stays ignored. To be called before other threads are started, and by the thread
 * that waits for replies. */
void watch_signals(signal_policy policy);

/* While it exists the cursor stands in a line that is not ended, after a question: a signal that ends the program ends
 * the line first. */
class open_line
{
  public:
    open_line();
    ~open_line();
    open_line(const open_line &) = delete;
    open_line &operator=(const open_line &) = delete;
};

/* The signal that was noted, 0 for none; and when that was. */
int noted_signal();
std::chrono::steady_clock::time_point noted_at();

/* The exit code of the noted signal. */
common::exit_code noted_code();

/* Waits for the time given, or less when the thread that watches is woken up. */
void wait_for_wake_up(std::chrono::milliseconds most);

} // namespace station

#endif
