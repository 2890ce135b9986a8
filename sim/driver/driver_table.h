/* SPDX-License-Identifier: MIT
 *
 * The driver functions of the simulated switch.
 */
#ifndef SIM_DRIVER_TABLE_H
#define SIM_DRIVER_TABLE_H

#include <string_view>
#include <vector>

#include "facmsg_driver.h"
#include "sim/model/runner.h"

namespace sim
{

/* The names of all slots that the simulated switch fills. */
const std::vector<std::string_view> &slot_names();

/* The table with all slots filled but the dropped ones, whose names must be known. */
vexa_diag_drv driver_table(const std::vector<std::string> &dropped = {});

/* Makes the driver functions work on a runner's board; announce says whether changes of factory mode and debug levels
 * are printed. To be called before the first driver call; the runner must outlive the last. */
void drive(runner &switch_runner, bool announce);

} // namespace sim

#endif
