/* SPDX-License-Identifier: MIT
 *
 * The driver functions of the simulated switch: each slot's call, translated to the board. Every call runs with the
 * board to itself, and may first be made to fail by the board's call faults.
 */
#include "driver_table.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <tuple>

namespace sim
{

static runner *g_runner;
static bool g_announce;

/* Frames that the CPU can send: from a bare Ethernet header up to a jumbo frame. */
static constexpr uint32_t SHORTEST_CPU_FRAME = 14;
static constexpr uint32_t LONGEST_CPU_FRAME = 9216;

/* ---- The functions: the slot's own parameters behind the board ---- */

static int get_status(board &b, uint32_t, uint32_t number, port_status_row *status)
{
    const auto *found = b.find_port(number);
    if (!found)
        return -1;
    *status = found->status();
    return 0;
}

static int set_status(board &b, uint32_t, uint32_t number, port_status_row *status)
{
    auto *found = b.find_port(number);
    return found && b.set_status(*found, *status) ? 0 : -1;
}

static int get_ability(board &b, uint32_t, uint32_t number, port_ability_row *ability)
{
    const auto *found = b.find_port(number);
    if (!found)
        return -1;
    *ability = found->config().ability;
    return 0;
}

static int get_port_phyid(board &b, uint32_t number, void *record)
{
    const auto *found = b.find_port(number);
    if (!found)
        return -1;
    memcpy(record, &found->config().phy_id, sizeof(uint32_t));
    return 0;
}

static mac_address mac_of(const uint8_t *bytes)
{
    mac_address mac;
    std::copy_n(bytes, mac.size(), mac.begin());
    return mac;
}

static int set_cpu_mac_addr(board &b, const uint8_t *mac)
{
    b.fabric.add_cpu_mac(mac_of(mac));
    return 0;
}

static int clear_cpu_mac_addr(board &b, const uint8_t *mac)
{
    return b.fabric.remove_cpu_mac(mac_of(mac)) ? 0 : -1;
}

/* Keeps a setting and prints a line when it changes. */
template <class T> static void set_and_announce(T &setting, T value, const char *name)
{
    if (std::exchange(setting, value) != value && g_announce)
        printf("%s: %d\n", name, static_cast<int>(value));
}

static int set_factory_mode(board &b)
{
    set_and_announce(b.factory_mode, true, "factory mode");
    return 0;
}

static int set_port_debug_level(board &b, int32_t level)
{
    set_and_announce(b.port_debug_level, level, "port debug level");
    return 0;
}

static int set_poe_debug_level(board &b, int32_t level)
{
    set_and_announce(b.poe_debug_level, level, "poe debug level");
    return 0;
}

static int send_packet(board &b, const pack_info *info, const uint8_t *frame, uint32_t length)
{
    auto *found = b.find_phy(info->phy_id);
    if (!found || length < SHORTEST_CPU_FRAME || length > LONGEST_CPU_FRAME)
        return -1;
    b.transmit(*found, {frame, length});
    return 0;
}

static int port_on_off(board &b, uint32_t, uint32_t number, uint32_t on)
{
    auto *found = b.find_port(number);
    if (!found)
        return -1;
    b.switch_port(*found, on != 0);
    return 0;
}

static int get_port_fcs(board &b, uint32_t, uint32_t number, uint64_t *fcs)
{
    const auto *found = b.find_port(number);
    if (!found)
        return -1;
    *fcs = found->counters.fcs_errors;
    return 0;
}

static int get_port_stat(board &b, uint32_t, uint32_t number, uint64_t *in_pkts, uint64_t *ex_pkts)
{
    const auto *found = b.find_port(number);
    if (!found)
        return -1;
    *in_pkts = found->counters.in_pkts;
    *ex_pkts = found->counters.ex_pkts;
    return 0;
}

static int clear_port_stat(board &b, uint32_t, uint32_t number)
{
    auto *found = b.find_port(number);
    if (!found)
        return -1;
    found->counters = {};
    return 0;
}

/* ---- What all slots share ---- */

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

static std::optional<uint32_t> as_port(board &, uint32_t number)
{
    return number;
}

static std::optional<uint32_t> as_port(board &b, const pack_info *info)
{
    const auto *found = b.find_phy(info->phy_id);
    return found ? std::optional(found->config().number) : std::nullopt;
}

/* Sending occupies the CPU for a while; all other calls take no time. */
template <class... A> static time_us call_time(const board &, A...)
{
    return 0;
}

static time_us call_time(const board &b, const pack_info *, const uint8_t *, uint32_t)
{
    return b.config().cpu_frame_us;
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

template <slot_name Name, port_parameter Port, class... P>
static entry<Name, Port, P...> entry_for(int (*)(board &, P...))
{
    return {};
}

template <slot_name Name, port_parameter Port, auto Member, auto Function> static void fill(vexa_diag_drv &table)
{
    table.*Member = decltype(entry_for<Name, Port>(Function))::template call<Function>;
}

struct slot_row {
    std::string_view name;
    void (*fill)(vexa_diag_drv &table);
};

template <slot_name Name, port_parameter Port, auto Member, auto Function> static constexpr slot_row row()
{
    return {Name.text, fill<Name, Port, Member, Function>};
}

#define SLOT(name, port) row<#name, port, &vexa_diag_drv::name, name>()

static constexpr slot_row SLOTS[] = {
    SLOT(get_status, SECOND),       SLOT(set_status, SECOND),         SLOT(get_ability, SECOND),
    SLOT(set_factory_mode, NONE),   SLOT(get_port_phyid, FIRST),      SLOT(set_cpu_mac_addr, NONE),
    SLOT(clear_cpu_mac_addr, NONE), SLOT(set_port_debug_level, NONE), SLOT(set_poe_debug_level, NONE),
    SLOT(send_packet, FIRST),       SLOT(port_on_off, SECOND),        SLOT(get_port_fcs, SECOND),
    SLOT(get_port_stat, SECOND),    SLOT(clear_port_stat, SECOND),
};

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
