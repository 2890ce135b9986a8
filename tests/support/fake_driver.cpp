/* SPDX-License-Identifier: MIT
 *
 * The fake switch. Slots of the library's table never change once filled, so the functions in it lead to whichever fake
 * is present.
 */
#include "fake_driver.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <type_traits>
#include <utility>

#include "simulation.h"
#include "trace.h"

static fake_driver *present;

/* ---- A call as the trace shows it: words and MAC addresses, no outputs ---- */

template <class Argument> static std::string shown(Argument argument)
{
    if constexpr (std::is_integral_v<Argument>)
        return std::to_string(argument) + ",";
    return "";
}

static std::string shown(const uint8_t *mac)
{
    char text[19];
    snprintf(text, sizeof(text), "%02x:%02x:%02x:%02x:%02x:%02x,", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return text;
}

template <class... Arguments> static std::string list(Arguments... arguments)
{
    const std::string text = (std::string() + ... + shown(arguments));
    return text.substr(0, text.size() - !text.empty());
}

static int get_status(uint32_t unit, uint32_t port, port_status_row *row)
{
    if (const int error = present->enter("get_status", list(unit, port), port))
        return error;
    fake_port *const p = present->find(port);
    if (p == nullptr)
        return -1;
    *row = p->status;
    if (p->down_polls != 0 || (p->breaks_in > 0 && --p->breaks_in == 0))
        row->link = 0;
    if (p->down_polls > 0)
        p->down_polls--;
    return 0;
}

static int set_status(uint32_t unit, uint32_t port, port_status_row *row)
{
    const auto words = list(unit, port, row->host_word_0, row->speed, row->medium, row->duplex, row->host_word_5);
    if (const int error = present->enter("set_status", words, port))
        return error;
    present->ports.at(port).status = *row;
    present->ports.at(port).status.link = 1;
    return 0;
}

static int get_ability(uint32_t unit, uint32_t port, port_ability_row *ability)
{
    if (const int error = present->enter("get_ability", list(unit, port), port))
        return error;
    const fake_port *const p = present->find(port);
    if (p == nullptr)
        return -2;
    *ability = p->ability;
    return 0;
}

static int get_port_phyid(uint32_t port, void *record)
{
    const auto request = static_cast<port_packet_req *>(record);
    const auto words = list(port, request->tx_selector, request->mode, request->count, request->frame_count);
    if (const int error = present->enter("get_port_phyid", words, port))
        return error;
    const fake_port *const p = present->find(port);
    if (p == nullptr)
        return -1;
    request->phy_id = p->phy_id;
    return 0;
}

static int send_packet(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    const auto words = list(info->zero, info->tx_selector, info->phy_id, length);
    if (const int error = present->enter("send_packet", words, info->phy_id - 0x100))
        return error;
    present->transmit(*info, frame, length);
    return 0;
}

/* ---- Slots without a state of their own: traced, failing on order, with outputs from `answers` ---- */

/* The port of a call is its second word, behind the unit; PoE slots have no unit. */
template <class... Arguments> static uint32_t port_of(const std::string &slot, Arguments... arguments)
{
    uint32_t words[3] = {}, *next = words;
    [[maybe_unused]] const auto take = [&](auto argument) {
        if constexpr (std::is_same_v<decltype(argument), uint32_t>)
            if (next != words + 2)
                *next++ = argument;
    };
    (take(arguments), ...);
    return words[slot.starts_with("poe_") ? 0 : 1];
}

template <class Argument> static void write_output(const std::string &slot, uint32_t port, Argument to, int &nth)
{
    if constexpr (std::is_pointer_v<Argument> && !std::is_const_v<std::remove_pointer_t<Argument>>) {
        const auto answer = present->answers.find(slot);
        const uint64_t value = answer == present->answers.end() ? 0 : answer->second(port, nth++);
        memcpy(to, &value, sizeof(*to));
    }
}

template <auto member> static std::string slot_name;

template <auto member, class... Arguments> static int stateless(Arguments... arguments)
{
    const std::string &slot = slot_name<member>;
    const uint32_t port = port_of(slot, arguments...);
    if (const int error = present->enter(slot, list(arguments...), port))
        return error;
    [[maybe_unused]] int nth = 0;
    (write_output(slot, port, arguments, nth), ...);
    return 0;
}

template <auto member, class... Arguments>
static void fill(vexa_diag_drv &table, int (*vexa_diag_drv::*)(Arguments...), const std::string &name)
{
    slot_name<member> = name.substr(name.rfind(':') + 1);
    table.*member = stateless<member, Arguments...>;
}

/* `names` is the list of members as it was written. */
template <auto... members> static void fill_all(vexa_diag_drv &table, const char *names)
{
    std::istringstream list(names);
    std::string name;
    (fill<members>(table, members, (std::getline(list, name, ','), name)), ...);
}
#define FILL(...) fill_all<__VA_ARGS__>(table, #__VA_ARGS__)

vexa_diag_drv fake_table()
{
    vexa_diag_drv table = {};
    table.get_status = get_status;
    table.set_status = set_status;
    table.get_ability = get_ability;
    table.get_port_phyid = get_port_phyid;
    table.send_packet = send_packet;
    using drv = vexa_diag_drv;
    FILL(&drv::poe_set_port_enable, &drv::poe_get_power_state, &drv::poe_get_overload, &drv::poe_set_max_power,
         &drv::poe_get_power, &drv::poe_get_pd_class, &drv::poe_get_mcu_ver, &drv::poe_mcu_upg,
         &drv::poe_get_vop_test_result);
    FILL(&drv::set_factory_mode, &drv::set_cpu_mac_addr, &drv::clear_cpu_mac_addr, &drv::set_port_debug_level,
         &drv::set_poe_debug_level, &drv::port_on_off, &drv::port_broadcast_begin, &drv::port_broadcast_end,
         &drv::get_port_fcs, &drv::port_vlan_pair, &drv::set_pvid, &drv::vlan, &drv::vlan_static_mac,
         &drv::begin_end_prbs, &drv::get_clear_prbs_status, &drv::port_vlan1, &drv::port_phy_loopback,
         &drv::port_speed_prepare, &drv::get_port_type, &drv::get_port_stat, &drv::clear_port_stat,
         &drv::get_ex_speed_support);
    return table;
}

fake_driver::fake_driver()
{
    present = this;
    facmsg_vexa_diag_drv = fake_table();
    simulation::on_wait = [this] { pass_wait(); };
    trace_clear();
}

fake_driver::~fake_driver()
{
    simulation::on_wait = nullptr;
    facmsg_vexa_diag_drv = {};
    present = nullptr;
}

fake_port &fake_driver::add_port(uint32_t number, port_ability_row ability)
{
    fake_port &port = ports[number];
    port.ability = ability;
    port.phy_id = 0x100 + number;
    return port;
}

fake_port *fake_driver::find(uint32_t number)
{
    const auto port = ports.find(number);
    return port == ports.end() ? nullptr : &port->second;
}

int fake_driver::enter(const std::string &slot, const std::string &arguments, uint32_t port)
{
    trace_add(slot + "(" + arguments + ")");
    for (auto &order : failures) {
        if (order.slot != slot || (order.port != 0 && order.port != port))
            continue;
        order.seen++;
        if (order.nth == 0 || order.seen == order.nth || (order.nth < 0 && order.seen % order.nth == 0))
            return order.value;
    }
    return 0;
}

void fake_driver::transmit(const pack_info &info, const uint8_t *frame, uint32_t length)
{
    if (on_send)
        return on_send(info, frame, length);
    fake_port *const port = find(info.phy_id - 0x100);
    if (port == nullptr)
        return;
    port->sent++;
    for (int copy = port->copies ? port->copies(port->sent) : 1; copy > 0; copy--) {
        if (port->delay_waits == 0)
            vexa_recv_packet(&info, frame, length);
        else
            under_way.push_back({port->delay_waits, info, {frame, frame + length}});
    }
}

void fake_driver::pass_wait()
{
    for (auto &frame : under_way)
        if (--frame.waits_left == 0)
            vexa_recv_packet(&frame.info, frame.bytes.data(), static_cast<uint32_t>(frame.bytes.size()));
    std::erase_if(under_way, [](const auto &frame) { return frame.waits_left == 0; });
}
