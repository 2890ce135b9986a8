/* SPDX-License-Identifier: MIT
 *
 * The driver functions of the simulated switch.
 */
#ifndef SIM_DRIVER_TABLE_H
#define SIM_DRIVER_TABLE_H

#include <string_view>
#include <vector>

#include "facmsg_driver.h"
#include "sim/model/live_board.h"

namespace sim
{

/* The names of all slots that the simulated switch fills. */
const std::vector<std::string_view> &slot_names();

/* The table with all slots filled but the dropped ones, whose names must be known. */
vexa_diag_drv driver_table(const std::vector<std::string> &dropped = {});

/* Makes the driver functions work on a board; announce says whether changes of factory mode and debug levels are
 * printed. Calls fail as the board's call faults say, counted from here. To be called before the first driver call; the
 * board must outlive the last. Driver calls may come from any thread. */
void drive(live_board &driven, bool announce);

} // namespace sim

#endif
