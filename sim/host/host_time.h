/* SPDX-License-Identifier: MIT
 *
 * The process's sleep, usleep and gettimeofday, on the board's clock. The program exports them, so that the library's
 * calls end here instead of in libc.
 */
#ifndef SIM_HOST_TIME_H
#define SIM_HOST_TIME_H

#include "sim/model/live_board.h"

namespace sim
{

/* Makes waits pass on a board; until then they return at once and the time is 0. The board must outlive the last of
 * them. Waits may be any thread's. */
void use_board_time(live_board &driven);

} // namespace sim

#endif
