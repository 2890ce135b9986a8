/* SPDX-License-Identifier: MIT
 *
 * What all driver functions of the simulated switch share. A family of slots is a file with one function per slot,
 * which takes the board and the slot's own parameters, and a table of SLOT rows. Every call runs with the board to
 * itself, and may first be made to fail by the board's call faults.
 */
#ifndef SIM_DRIVER_SLOTS_H
#define SIM_DRIVER_SLOTS_H

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "facmsg_driver.h"
#include "runner.h"

namespace sim
{

struct slot_row {
    std::string_view name;
    void (*fill)(vexa_diag_drv &table);
};

/* The families. */
std::span<const slot_row> cpu_slots();
std::span<const slot_row> port_slots();
std::span<const slot_row> phy_slots();
std::span<const slot_row> vlan_slots();
std::span<const slot_row> poe_slots();

/* Where driver calls go; set by drive(). */
extern runner *g_runner;
extern bool g_announce;

/* Keeps a setting and prints a line when it changes. */
template <class T> void set_and_announce(T &setting, T value, const char *name)
{
    if (std::exchange(setting, value) != value && g_announce)
        printf("%s: %d\n", name, static_cast<int>(value));
}

/* Calls use(port); -1 when there is no such port. */
template <class F> int with_port(board &b, uint32_t number, F use)
{
    auto *found = b.find_port(number);
    return found ? use(*found) : -1;
}

inline mac_address mac_of(const uint8_t *bytes)
{
    mac_address mac;
    std::copy_n(bytes, mac.size(), mac.begin());
    return mac;
}

/* A slot's name as a template argument. */
template <size_t N> struct slot_name {
    char text[N];
    constexpr slot_name(const char (&name)[N])
    {
        std::copy_n(name, N, text);
    }
};

/* Which parameter says what port a call is for. */
enum port_parameter { NONE = -1, FIRST = 0, SECOND = 1 };

inline std::optional<uint32_t> as_port(board &, uint32_t number)
{
    return number;
}

inline std::optional<uint32_t> as_port(board &b, const pack_info *info)
{
    const auto *found = b.find_phy(info->phy_id);
    return found ? std::optional(found->config().number) : std::nullopt;
}

/* Sending occupies the CPU for a while, and longer when a port is behind; all other calls take no time. */
template <class... A> time_us call_time(board &, A...)
{
    return 0;
}

inline time_us call_time(board &b, const pack_info *info, const uint8_t *, uint32_t)
{
    const auto *found = b.find_phy(info->phy_id);
    return std::max<time_us>(b.config().cpu_frame_us, found ? found->out.room_in() : 0);
}

/* The function that goes into the table: fails, or calls the slot's own function with the board. */
template <slot_name Name, port_parameter Port, class... P> struct entry {
    template <int (*Function)(board &, P...)> static int call(P... arguments)
    {
        time_us duration = 0;
        const int result = g_runner->with_board([&](board &b) {
            std::optional<uint32_t> number;
            if constexpr (Port != NONE)
                number = as_port(b, std::get<Port>(std::tuple(arguments...)));
            duration = call_time(b, arguments...);
            const auto failure = b.calls.strike(Name.text, number);
            return failure ? *failure : Function(b, arguments...);
        });
        if (duration)
            g_runner->wait(duration);
        return result;
    }
};

template <slot_name Name, port_parameter Port, class... P> entry<Name, Port, P...> entry_for(int (*)(board &, P...))
{
    return {};
}

template <slot_name Name, port_parameter Port, auto Member, auto Function> void fill(vexa_diag_drv &table)
{
    table.*Member = decltype(entry_for<Name, Port>(Function))::template call<Function>;
}

template <slot_name Name, port_parameter Port, auto Member, auto Function> constexpr slot_row row()
{
    return {Name.text, fill<Name, Port, Member, Function>};
}

#define SLOT(name, port) row<#name, port, &vexa_diag_drv::name, name>()

} // namespace sim

#endif
