/* SPDX-License-Identifier: MIT
 *
 * The driver table of the simulated switch: a row for each slot, and what every call has in common.
 */
#include "driver_table.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "driver_slots.h"

namespace sim
{

runner *g_runner;
bool g_announce;

time_us g_call_us;

static std::optional<uint32_t> number_of(board &, uint32_t number)
{
    return number;
}

static std::optional<uint32_t> number_of(board &b, const pack_info *info)
{
    const auto *found = b.find_phy(info->phy_id);
    return found ? std::optional(found->config().number) : std::nullopt;
}

/* The port that a call is for. */
template <slot_port Parameter, class... P> static std::optional<uint32_t> port_of(board &b, P... arguments)
{
    if constexpr (Parameter != slot_port::NONE)
        return number_of(b, std::get<static_cast<size_t>(Parameter)>(std::tuple(arguments...)));
    return std::nullopt;
}

/* Sending occupies the CPU for a while, and longer when a port is behind; all other calls begin at no cost. */
template <class... P> static time_us call_time(board &, P...)
{
    return 0;
}

static time_us call_time(board &b, const pack_info *info, const uint8_t *, uint32_t)
{
    const auto *found = b.find_phy(info->phy_id);
    return std::max<time_us>(b.config().cpu_frame_us, found ? found->out.room_in() : 0);
}

/* A driver call: fails when the board's call faults say so, and calls the slot's function otherwise. */
template <slot_port Parameter, class... P>
static int call(std::string_view slot, int (*function)(board &, P...), P... arguments)
{
    time_us duration = 0;
    const int result = g_runner->with_board([&](board &b) {
        g_call_us = call_time(b, arguments...);
        const auto failure = b.calls.strike(slot, port_of<Parameter>(b, arguments...));
        const int answer = failure ? *failure : function(b, arguments...);
        duration = g_call_us;
        return answer;
    });
    if (duration)
        g_runner->wait(duration);
    return result;
}

struct slot_row {
    std::string_view name;
    void (*fill)(vexa_diag_drv &table);
};

#define ROW(index, slot, port)                                                                                   \
    {#slot, [](vexa_diag_drv &table) {                                                                           \
         table.slot = [](auto... arguments) { return call<slot_port::port>(#slot, slots::slot, arguments...); }; \
     }},
static constexpr slot_row SLOTS[] = {FACMSG_SLOTS(ROW)};

const std::vector<std::string_view> &slot_names()
{
    static const auto names = [] {
        std::vector<std::string_view> all;
        for (const auto &row : SLOTS)
            all.push_back(row.name);
        return all;
    }();
    return names;
}

vexa_diag_drv driver_table(const std::vector<std::string> &dropped)
{
    vexa_diag_drv table{};
    for (const auto &row : SLOTS) {
        if (std::find(dropped.begin(), dropped.end(), row.name) == dropped.end())
            row.fill(table);
    }
    return table;
}

void drive(runner &switch_runner, bool announce)
{
    g_runner = &switch_runner;
    g_announce = announce;
}

} // namespace sim
