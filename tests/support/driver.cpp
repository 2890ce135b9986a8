/* SPDX-License-Identifier: MIT */
#include <cstring>
#include <string_view>

#include "internal/facmsg_slots.h"
#include "world.h"

std::string hex(const void *bytes, size_t size)
{
    static thread_local std::string last, text; /* the same frame comes thousands of times */
    const std::string_view all(static_cast<const char *>(bytes), size);
    if (all == last)
        return text;
    text.clear();
    for (const char byte : last = all)
        for (const int shift : {4, 0})
            text += "0123456789abcdef"[byte >> shift & 15];
    return text;
}

std::string driver_call::text() const
{
    std::string all;
    for (size_t i = 0; i < argument_count; i++)
        if (const auto &argument = arguments[i]; argument.output == nullptr)
            all +=
                "," + (argument.bytes == nullptr ? std::to_string(argument.word) : hex(argument.bytes, argument.count));
    return slot + ("(" + all.substr(!all.empty())) + ")";
}

void driver_call::write(std::span<const uint64_t> values) const
{
    size_t next = 0;
    for (size_t row = 0; row < argument_count; row++)
        for (size_t i = 0; arguments[row].output != nullptr && i < arguments[row].count; i++, next++) {
            const uint64_t value = next < values.size() ? values[next] : 0;
            const size_t size = arguments[row].size;
            memcpy(static_cast<char *>(arguments[row].output) + i * size, &value, size); /* little-endian */
        }
}

static void put(driver_call &call, const driver_call::argument_row &argument)
{
    call.arguments[call.argument_count++] = argument;
}

template <class Word> static void take(driver_call &call, Word word)
{
    put(call, {word, nullptr, nullptr, 0, 0});
}

static void take(driver_call &call, const uint8_t *mac)
{
    put(call, {0, mac, nullptr, 1, 6});
}

/* Of get_port_phyid: five words of which the driver writes the first. */
static void take(driver_call &call, void *record)
{
    for (const int i : {1, 2, 3, 4})
        take(call, static_cast<uint32_t *>(record)[i]);
    put(call, {0, nullptr, record, 4, 1});
}

/* Values, and records of values of one size. */
template <class Value> static void take(driver_call &call, Value *values)
{
    constexpr size_t size = alignof(Value), count = sizeof(Value) / size;
    const std::string_view slot = call.slot;
    if (slot != "set_status" && slot != "begin_end_prbs")
        return put(call, {0, nullptr, values, size, count});
    for (size_t i = 0; i < count; i++)
        take(call, reinterpret_cast<const uint32_t *>(values)[i]);
}

template <class... Arguments> static int lead(const char *slot, slot_port port, Arguments... arguments)
{
    driver_call call;
    call.slot = slot;
    (take(call, arguments), ...);
    if (port != slot_port::NONE)
        call.port = static_cast<uint32_t>(call.arguments[static_cast<size_t>(port)].word);
    return world::on_call(call);
}

static int lead(const char *slot, slot_port, const pack_info *info, const uint8_t *frame, uint32_t length)
{
    driver_call call;
    call.slot = slot;
    call.port = info->phy_id;
    for (const uint32_t word : {uint32_t{info->zero}, uint32_t{info->tx_selector}, info->phy_id, length})
        take(call, word);
    put(call, {0, frame, nullptr, 1, length});
    return world::on_call(call);
}

namespace world
{

std::function<int(const driver_call &)> &on_call = *new std::function<int(const driver_call &)>([](const auto &call) {
    call.write({});
    return 0;
});

vexa_diag_drv driver_table()
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

std::string name_of(uintptr_t address)
{
    static const vexa_diag_drv table = driver_table();
#define NAME(index, name, port)                             \
    if (address == reinterpret_cast<uintptr_t>(table.name)) \
        return #name;
    FACMSG_SLOTS(NAME)
    return address != 0 && address == latest_allocation ? "pointer" : "";
}

} // namespace world
