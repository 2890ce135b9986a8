/* SPDX-License-Identifier: MIT
 *
 * The fake switch. Slots of the library's table never change once filled, so the functions in it lead to whichever fake
 * is present.
 */
#include "fake_driver.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "internal/facmsg_slots.h"
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

static uint32_t word(uint32_t argument)
{
    return argument;
}

template <class Argument> static uint32_t word(Argument)
{
    return 0;
}

/* The port that a call is for; 0 without. */
template <class... Arguments> static uint32_t port_of(slot_port parameter, Arguments... arguments)
{
    const uint32_t words[] = {word(arguments)..., 0};
    return parameter == slot_port::NONE ? 0 : words[static_cast<size_t>(parameter)];
}

template <class Argument> static void write_output(const std::string &slot, uint32_t port, Argument to, int &nth)
{
    if constexpr (std::is_pointer_v<Argument> && !std::is_const_v<std::remove_pointer_t<Argument>>) {
        const auto answer = present->answers.find(slot);
        const uint64_t value = answer == present->answers.end() ? 0 : answer->second(port, nth++);
        memcpy(to, &value, std::min(sizeof(*to), sizeof(value)));
    }
}

static void write_output(const std::string &, uint32_t, void *, int &) {}

template <class... Arguments> static int stateless(const std::string &slot, slot_port parameter, Arguments... arguments)
{
    const uint32_t port = port_of(parameter, arguments...);
    if (const int error = present->enter(slot, list(arguments...), port))
        return error;
    [[maybe_unused]] int nth = 0;
    (write_output(slot, port, arguments, nth), ...);
    return 0;
}

vexa_diag_drv fake_table()
{
    vexa_diag_drv table = {};
#define STATELESS(index, name, port) \
    table.name = [](auto... arguments) { return stateless(#name, slot_port::port, arguments...); };
    FACMSG_SLOTS(STATELESS)
    table.get_status = get_status;
    table.set_status = set_status;
    table.get_ability = get_ability;
    table.get_port_phyid = get_port_phyid;
    table.send_packet = send_packet;
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
