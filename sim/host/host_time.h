/* SPDX-License-Identifier: MIT
 *
 * The process's sleep, usleep and gettimeofday, on the board's clock. The program exports them, so that the library's
 * calls end here instead of in libc.
 */
#ifndef SIM_HOST_TIME_H
#define SIM_HOST_TIME_H

#include "sim/model/runner.h"

namespace sim
{

/* Makes waits pass on a runner's board; until then they return at once and the time is 0. The runner must outlive the
 * last of them. */
void use_board_time(runner &clock);

} // namespace sim

#endif
