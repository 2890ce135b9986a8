/* SPDX-License-Identifier: MIT
 *
 * The factory-test library in this process: the clock that its waits pass on, and its service in the working directory
 * as the host that serves it looks at it.
 */
#ifndef SIM_SERVICE_H
#define SIM_SERVICE_H

#include "sim/model/live_board.h"

namespace sim
{

/* The process's sleep, usleep and gettimeofday are the service's own: the program exports them, so that the library's
 * calls end here instead of in libc. Makes waits pass on a board; until then they return at once and the time is 0. The
 * board must outlive the last of them. Waits may be any thread's. */
void use_board_time(live_board &target);

/* Whether somebody accepts connections at the service's socket. */
bool service_listens();

/* Whether the service answers a request of a type that it does not have within a few seconds. Changes nothing in it. */
bool service_answers();

/* Runs the flow pressure test, which no request leads to: calls the library's function and prints its reply as one line
 * of JSON; port arrays as the list positions, counted from 1, that are set. Throws std::system_error when there is no
 * way to get the reply. */
void run_flow_pressure();

} // namespace sim

#endif
