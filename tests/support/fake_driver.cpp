/* SPDX-License-Identifier: MIT
 *
 * Slots of the library's table never change once filled, so the functions in it lead to whichever fake is present.
 */
#include "fake_driver.h"

#include <cstring>
#include <map>
#include <type_traits>

#include "internal/facmsg_slots.h"
#include "simulation.h"

static fake_driver *present;

std::string short_hex(const void *data, size_t size)
{
    const auto *const bytes = static_cast<const uint8_t *>(data);
    size_t end = size, period = 0; /* of what is shown */
    for (const size_t p : {1u, 2u, 8u}) {
        size_t start = size > p ? size - p : 0;
        while (start > 0 && bytes[start - 1] == bytes[start - 1 + p])
            start--;
        if (start + p < end) {
            end = start + p;
            period = p;
        }
    }
    std::string text;
    for (size_t i = 0; i < end; i++) {
        text += period > 0 && i == end - period ? "[" : "";
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 15];
    }
    return text + (period > 0 ? "]" : "");
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
    return bytes;
}

void driver_call::write(const std::vector<uint64_t> &values) const
{
    size_t next = 0;
    for (const auto &output : outputs)
        for (size_t i = 0; i < output.count; i++, next++) {
            const uint64_t value = next < values.size() ? values[next] : 0;
            memcpy(static_cast<char *>(output.to) + i * output.size, &value, output.size); /* little-endian */
        }
}

/* ---- From a call's arguments to its text and outputs ---- */

template <class Argument> static void take(driver_call &call, Argument word)
{
    call.text += std::to_string(word) + ",";
}

static void take(driver_call &call, const uint8_t *mac)
{
    call.text += short_hex(mac, 6) + ",";
}

static void take(driver_call &call, void *record)
{
    const auto *const words = static_cast<uint32_t *>(record);
    for (const int i : {1, 2, 3, 4})
        take(call, words[i]);
    call.outputs.push_back({record, 4, 1});
}

/* Values, and records of values of one size. */
template <class Value> static void take(driver_call &call, Value *values)
{
    constexpr size_t size = std::is_class_v<Value> ? alignof(Value) : sizeof(Value);
    if (call.slot != "set_status" && call.slot != "begin_end_prbs")
        return call.outputs.push_back({values, size, sizeof(Value) / size});
    for (size_t i = 0; i < sizeof(Value) / size; i++)
        take(call, reinterpret_cast<const uint32_t *>(values)[i]);
}

static int answer(driver_call &call)
{
    if (call.text.back() == ',')
        call.text.pop_back();
    call.text += ")";
    trace_add(call.text);
    return present->answer(call);
}

template <class... Arguments> static int lead(const char *slot, slot_port port, Arguments... arguments)
{
    driver_call call = {slot, std::string(slot) + "(", 0, {}};
    int position = 0;
    [[maybe_unused]] const auto note_port = [&](auto argument) {
        if constexpr (std::is_integral_v<decltype(argument)>)
            if (position++ == static_cast<int>(port))
                call.port = static_cast<uint32_t>(argument);
    };
    (note_port(arguments), ...);
    (take(call, arguments), ...);
    return answer(call);
}

static int lead(const char *slot, slot_port, const pack_info *info, const uint8_t *frame, uint32_t length)
{
    driver_call call = {slot, std::string(slot) + "(", info->phy_id, {}};
    for (const uint32_t word : {uint32_t{info->zero}, uint32_t{info->tx_selector}, info->phy_id, length})
        take(call, word);
    static thread_local std::string last, shown; /* tests send the same frame thousands of times */
    const std::string_view bytes(reinterpret_cast<const char *>(frame), length);
    if (bytes != last) {
        last = bytes;
        shown = short_hex(frame, length);
    }
    call.text += shown;
    return answer(call);
}

vexa_diag_drv fake_table()
{
    vexa_diag_drv table = {};
#define LEAD(index, name, port) \
    table.name = [](auto... arguments) { return lead(#name, slot_port::port, arguments...); };
    FACMSG_SLOTS(LEAD)
    return table;
}

bool empty_slot(const std::string &slot)
{
#define EMPTY(index, name, port) \
    if (slot == #name)           \
        return facmsg_vexa_diag_drv.name = nullptr, true;
    FACMSG_SLOTS(EMPTY)
    return false;
}

std::string slot_of(uintptr_t function)
{
    static const vexa_diag_drv table = fake_table();
    static const std::map<uintptr_t, std::string> names = {
#define NAME(index, name, port) {reinterpret_cast<uintptr_t>(table.name), #name},
        FACMSG_SLOTS(NAME)};
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
