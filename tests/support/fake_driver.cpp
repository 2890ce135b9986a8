/* SPDX-License-Identifier: MIT
 *
 * Slots of the library's table never change once filled, so the functions in it lead to whichever fake is present.
 */
#include "fake_driver.h"

#include <cstring>
#include <map>
#include <sstream>
#include <type_traits>

#include "simulation.h"

static fake_driver *present;
static std::map<std::string, size_t> slot_offsets;

static std::string hex(const uint8_t *bytes, size_t size)
{
    std::string text;
    for (size_t i = 0; i < size; i++)
        for (const int digit : {bytes[i] >> 4, bytes[i] & 15})
            text += "0123456789abcdef"[digit];
    return text;
}

std::string short_hex(const void *data, size_t size)
{
    const auto *const bytes = static_cast<const uint8_t *>(data);
    size_t best = size, period = 0;
    for (const size_t p : {1u, 2u, 8u}) {
        size_t start = size > p ? size - p : 0;
        while (start > 0 && bytes[start - 1] == bytes[start - 1 + p])
            start--;
        if (start + p < best) {
            best = start + p;
            period = p;
        }
    }
    const size_t start = best - period;
    return hex(bytes, start) + (period == 0 ? "" : "[" + hex(bytes + start, period) + "]");
}

std::vector<uint8_t> long_bytes(const std::string &text, size_t size)
{
    std::vector<uint8_t> bytes;
    size_t again = 0;
    for (size_t at = 0; at + 1 < text.size(); at += 2) {
        if (text[at] == '[')
            again = bytes.size(), at++;
        bytes.push_back(static_cast<uint8_t>(std::stoi(text.substr(at, 2), nullptr, 16)));
    }
    while (bytes.size() < size)
        bytes.push_back(text.ends_with("]") ? bytes[again++] : uint8_t{0});
    bytes.resize(size);
    return bytes;
}

void driver_call::write(const std::vector<uint64_t> &values) const
{
    size_t next = 0;
    for (const auto &output : outputs)
        for (size_t i = 0; i < output.count; i++, next++) {
            const uint64_t value = next < values.size() ? values[next] : 0;
            memcpy(static_cast<char *>(output.to) + i * output.size, &value, output.size); /* little-endian hosts */
        }
}

/* ---- From a call's arguments to its text and outputs ---- */

static void add_word(driver_call &call, int64_t word)
{
    call.text += std::to_string(word) + ",";
}

template <class Integer>
requires std::is_integral_v<Integer>
static void take(driver_call &call, Integer word)
{
    add_word(call, word);
}

static void take(driver_call &call, const uint8_t *mac)
{
    call.text += hex(mac, 6) + ",";
}

template <class Value> static void take(driver_call &call, Value *output)
{
    if (call.slot == "begin_end_prbs")
        add_word(call, static_cast<int64_t>(*output));
    else
        call.outputs.push_back({output, sizeof(*output), 1});
}

static void take(driver_call &call, port_status_row *row)
{
    if (call.slot == "set_status")
        for (const uint32_t word : {row->host_word_0, row->speed, row->medium, row->duplex, row->host_word_5})
            add_word(call, word);
    else
        call.outputs.push_back({row, 4, 6});
}

static void take(driver_call &call, port_ability_row *row)
{
    call.outputs.push_back({row, 4, 2});
}

static void take(driver_call &call, ex_speed_support *support)
{
    call.outputs.push_back({support, 1, 4});
}

static void take(driver_call &call, void *record)
{
    uint32_t words[5];
    memcpy(words, record, sizeof(words));
    for (const int i : {1, 2, 3, 4})
        add_word(call, words[i]);
    call.outputs.push_back({record, 4, 1});
}

static int answer(driver_call &call)
{
    if (call.text.back() == ',')
        call.text.pop_back();
    call.text += ")";
    trace_add(call.text);
    return present->answer(call);
}

/* The port of a call is its second word, after the unit; PoE slots and get_port_phyid have no unit. */
static uint32_t port_in(const driver_call &call)
{
    const bool first = call.slot.starts_with("poe_") || call.slot == "get_port_phyid";
    const size_t at = call.text.find(first ? '(' : ',') + 1;
    return at == 0 ? 0 : static_cast<uint32_t>(strtoul(call.text.c_str() + at, nullptr, 10));
}

template <auto member> static std::string slot_name;

template <auto member, class... Arguments> static int lead(Arguments... arguments)
{
    driver_call call = {slot_name<member>, slot_name<member> + "(", {}};
    (take(call, arguments), ...);
    call.port = port_in(call);
    return answer(call);
}

static int send_packet(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    driver_call call = {"send_packet", "send_packet(", {}};
    for (const uint32_t word : {uint32_t{info->zero}, uint32_t{info->tx_selector}, info->phy_id, length})
        add_word(call, word);
    call.text += short_hex(frame, length);
    call.port = info->phy_id;
    return answer(call);
}

template <auto member, class... Arguments>
static void fill(vexa_diag_drv &table, int (*vexa_diag_drv::*)(Arguments...), const std::string &name)
{
    slot_name<member> = name.substr(name.rfind(':') + 1);
    const auto *const slot = reinterpret_cast<const char *>(&(table.*member));
    slot_offsets[slot_name<member>] = static_cast<size_t>(slot - reinterpret_cast<const char *>(&table));
    if constexpr (std::is_same_v<decltype(table.*member), decltype((table.send_packet))>)
        table.*member = send_packet;
    else
        table.*member = lead<member, Arguments...>;
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
    using drv = vexa_diag_drv;
    FILL(&drv::get_status, &drv::set_status, &drv::get_ability, &drv::get_port_phyid, &drv::poe_set_port_enable,
         &drv::poe_get_power_state, &drv::poe_get_overload, &drv::poe_set_max_power, &drv::poe_get_power,
         &drv::poe_get_pd_class, &drv::poe_get_mcu_ver, &drv::poe_mcu_upg, &drv::poe_get_vop_test_result,
         &drv::set_factory_mode, &drv::set_cpu_mac_addr, &drv::clear_cpu_mac_addr, &drv::set_port_debug_level,
         &drv::set_poe_debug_level, &drv::port_on_off, &drv::port_broadcast_begin, &drv::port_broadcast_end,
         &drv::get_port_fcs, &drv::port_vlan_pair, &drv::set_pvid, &drv::vlan, &drv::vlan_static_mac,
         &drv::begin_end_prbs, &drv::get_clear_prbs_status, &drv::port_vlan1, &drv::port_phy_loopback,
         &drv::port_speed_prepare, &drv::get_port_type, &drv::get_port_stat, &drv::clear_port_stat,
         &drv::get_ex_speed_support, &drv::send_packet);
    return table;
}

bool empty_slot(const std::string &name)
{
    const auto slot = slot_offsets.find(name);
    if (slot != slot_offsets.end())
        memset(reinterpret_cast<char *>(&facmsg_vexa_diag_drv) + slot->second, 0, sizeof(void *));
    return slot != slot_offsets.end();
}

std::string slot_of(uintptr_t function)
{
    static const std::map<uintptr_t, std::string> names = [] {
        const vexa_diag_drv table = fake_table();
        std::map<uintptr_t, std::string> all;
        for (const auto &[name, offset] : slot_offsets) {
            uintptr_t address;
            memcpy(&address, reinterpret_cast<const char *>(&table) + offset, sizeof(address));
            all[address] = name;
        }
        return all;
    }();
    const auto name = names.find(function);
    return name == names.end() ? "" : name->second;
}

fake_driver::fake_driver()
    : answer([](const driver_call &call) {
          call.write({});
          return 0;
      })
{
    present = this;
    facmsg_vexa_diag_drv = fake_table();
    trace_clear();
}

fake_driver::~fake_driver()
{
    facmsg_vexa_diag_drv = {};
    present = nullptr;
}
