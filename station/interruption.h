/* SPDX-License-Identifier: MIT
 *
 * SIGINT and SIGTERM: noted, so that what is under way can be brought to an end, or obeyed at once.
 */
#ifndef STATION_INTERRUPTION_H
#define STATION_INTERRUPTION_H

#include <chrono>
#include <csignal>

#include "outcome.h"

namespace station
{

enum class signal_policy {
    leave, /* the first signal ends the program */
    note   /* the first is noted; the second ends the program, wherever it is */
};

/* Blocked in the thread that watches, and sent to it when a signal was noted. */
constexpr int wake_up = SIGUSR1;

/* What the signals do from now on. A program that they end has the exit code 130 or 143. To be called before other
 * threads are started, and by the thread that waits for replies. */
void watch_signals(signal_policy policy);

/* The signal that was noted, 0 for none; and when that was. */
int noted_signal();
std::chrono::steady_clock::time_point noted_at();

/* interrupted or terminated, by the noted signal. */
exit_code noted_code();

} // namespace station

#endif
