/* SPDX-License-Identifier: MIT
 *
 * The driver of the simulated switch: the table that hosts get, and the functions behind it, one for each slot in a
 * file a family, with what they share.
 */
#ifndef SIM_DRIVER_TABLE_H
#define SIM_DRIVER_TABLE_H

#include <string_view>
#include <vector>

#include "facmsg_driver.h"
#include "internal/facmsg_slots.h"
#include "sim/model/live_board.h"

namespace sim
{

/* The names of all slots that the simulated switch fills. */
const std::vector<std::string_view> &slot_names();

/* The table with all slots filled but those to be left empty, whose names must be slot names. */
vexa_diag_drv driver_table(const std::vector<std::string> &empty = {});

/* Makes the driver functions work on a board; announce says whether changes of factory mode and debug levels are
 * printed. Calls fail as the board's call faults say, counted from here. To be called before the first driver call; the
 * board must outlive the last. Driver calls may come from any thread. */
void drive(live_board &target, bool announce);

/* Each takes the board, which it has to itself, and the slot's own parameters. */
namespace slots
{

template <class Slot> struct with_board;
template <class... P> struct with_board<int (*)(P...)> {
    using type = int(board &, P...);
};

#define DECLARE(index, name, port) with_board<decltype(vexa_diag_drv::name)>::type name;
FACMSG_SLOTS(DECLARE)
#undef DECLARE

} // namespace slots

/* Whether changes of settings are printed; set by drive(). */
extern bool g_announce;

/* How long the present call takes, for the board to pass; a function whose work takes time sets it. */
extern time_us g_call_us;

/* Calls use(port); -1 when there is no such port. */
template <class F> int with_port(board &b, uint32_t number, F use)
{
    auto *target = b.find_port(number);
    return target != nullptr ? use(*target) : -1;
}

} // namespace sim

#endif
