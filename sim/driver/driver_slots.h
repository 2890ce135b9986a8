/* SPDX-License-Identifier: MIT
 *
 * The driver functions of the simulated switch, one for each slot, in a file a family, and what they share. Each takes
 * the board, which it has to itself, and the slot's own parameters.
 */
#ifndef SIM_DRIVER_SLOTS_H
#define SIM_DRIVER_SLOTS_H

#include <algorithm>
#include <cstdio>
#include <utility>

#include "internal/facmsg_slots.h"
#include "sim/model/live_board.h"

namespace sim
{

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

/* Keeps a setting and prints a line when it changes. */
template <class T> void set_and_announce(T &setting, T value, const char *name)
{
    if (std::exchange(setting, value) != value && g_announce)
        printf("%s: %d\n", name, static_cast<int>(value));
}

/* Calls use(port); -1 when there is no such port. */
template <class F> int with_port(board &b, uint32_t number, F use)
{
    auto *target = b.find_port(number);
    return target != nullptr ? use(*target) : -1;
}

inline mac_address mac_of(const uint8_t *bytes)
{
    mac_address mac;
    std::copy_n(bytes, mac.size(), mac.begin());
    return mac;
}

} // namespace sim

#endif
