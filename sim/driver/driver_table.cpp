/* SPDX-License-Identifier: MIT */
#include "driver_table.h"

#include <algorithm>
#include <optional>
#include <tuple>

#include "driver_slots.h"

namespace sim
{

/* Decides which calls fail. */
class call_faults
{
  public:
    explicit call_faults(const std::vector<call_fault> &faults) : faults_(faults), calls_(faults.size()) {}

    /* Counts a call of a slot, for a port when it has one. The value with which the call is to fail at once, or nothing
     * when it is to go on; of several faults the first has its way. */
    std::optional<int> strike(std::string_view slot, std::optional<uint32_t> port)
    {
        std::optional<int> result;
        for (size_t i = 0; i < faults_.size(); i++) {
            const auto &fault = faults_[i];
            if (fault.slot != slot || (fault.port && fault.port != port))
                continue;
            const uint64_t call = ++calls_[i];
            const bool over = fault.calls != 0 && call >= uint64_t{fault.from_call} + fault.calls;
            if (call >= fault.from_call && !over && !result)
                result = fault.result;
        }
        return result;
    }

  private:
    std::vector<call_fault> faults_;
    std::vector<uint64_t> calls_; /* of each fault's slot and port */
};

bool g_announce;
time_us g_call_us;

static live_board *g_driven;
static call_faults g_faults({}); /* used with the board alone, as g_call_us is */

static std::optional<uint32_t> number_of(board &, uint32_t number)
{
    return number;
}

static std::optional<uint32_t> number_of(board &b, const pack_info *info)
{
    const auto *out = b.find_phy(info->phy_id);
    return out != nullptr ? std::optional(out->config().number) : std::nullopt;
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
    const auto *out = b.find_phy(info->phy_id);
    return std::max<time_us>(b.config().cpu_frame_us, out != nullptr ? out->out.room_in() : 0);
}

/* A driver call: fails when the board's call faults say so, and calls the slot's function otherwise. */
template <slot_port Parameter, class... P>
static int call(std::string_view slot, int (*function)(board &, P...), P... arguments)
{
    time_us duration = 0;
    const int result = g_driven->with_board([&](board &b) {
        g_call_us = call_time(b, arguments...);
        const auto failure = g_faults.strike(slot, port_of<Parameter>(b, arguments...));
        const int answer = failure ? *failure : function(b, arguments...);
        duration = g_call_us;
        return answer;
    });
    if (duration != 0)
        g_driven->wait(duration);
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

void drive(live_board &driven, bool announce)
{
    g_driven = &driven;
    g_announce = announce;
    g_faults = driven.with_board([](const board &b) { return call_faults(b.config().call_faults); });
}

} // namespace sim
