/* SPDX-License-Identifier: MIT */
#include <cstring>
#include <map>

#include "internal/facmsg_slots.h"
#include "world.h"

std::string hex(const void *bytes, size_t size)
{
    std::string text;
    for (size_t i = 0; i < size; i++)
        for (const int shift : {4, 0})
            text += "0123456789abcdef"[static_cast<const uint8_t *>(bytes)[i] >> shift & 15];
    return text;
}

std::string driver_call::text() const
{
    static thread_local std::string last, shown; /* the same frame comes thousands of times */
    std::string all = slot;
    for (size_t i = 0; i < argument_count; i++) {
        const auto &argument = arguments[i];
        if (argument.output != nullptr)
            continue;
        all += all.size() == strlen(slot) ? "(" : ",";
        const std::string_view bytes(static_cast<const char *>(argument.bytes), argument.count);
        if (argument.bytes != nullptr && bytes != last) {
            last = bytes;
            shown = hex(argument.bytes, argument.count);
        }
        all += argument.bytes != nullptr ? shown : std::to_string(argument.word);
    }
    return all + (all == slot ? "()" : ")");
}

void driver_call::write(const std::vector<uint64_t> &values) const
{
    size_t next = 0;
    for (const auto &argument : arguments)
        for (size_t i = 0; argument.output != nullptr && i < argument.count; i++, next++) {
            const uint64_t value = next < values.size() ? values[next] : 0;
            memcpy(static_cast<char *>(argument.output) + i * argument.size, &value, argument.size); /* little-endian */
        }
}

namespace
{

void put(driver_call &call, const driver_call::argument_row &argument)
{
    call.arguments[call.argument_count++] = argument;
}

template <class Word> void take(driver_call &call, Word word)
{
    put(call, {word});
}

void take_bytes(driver_call &call, const uint8_t *bytes, size_t size)
{
    put(call, {0, bytes, nullptr, 1, size});
}

void take(driver_call &call, const uint8_t *mac)
{
    take_bytes(call, mac, 6);
}

/* Of get_port_phyid: five words of which the driver writes the first. */
void take(driver_call &call, void *record)
{
    for (const int i : {1, 2, 3, 4})
        take(call, static_cast<uint32_t *>(record)[i]);
    put(call, {0, nullptr, record, 4, 1});
}

/* Values, and records of values of one size. */
template <class Value> void take(driver_call &call, Value *values)
{
    constexpr size_t size = alignof(Value);
    const std::string_view slot = call.slot;
    const bool inputs = slot == "set_status" || slot == "begin_end_prbs";
    if (!inputs)
        put(call, {0, nullptr, values, size, sizeof(Value) / size});
    for (size_t i = 0; inputs && i < sizeof(Value) / size; i++)
        take(call, reinterpret_cast<const uint32_t *>(values)[i]);
}

template <class... Arguments> int lead(const char *slot, slot_port port, Arguments... arguments)
{
    driver_call call = {slot, 0};
    (take(call, arguments), ...);
    if (port != slot_port::NONE)
        call.port = static_cast<uint32_t>(call.arguments[static_cast<size_t>(port)].word);
    return world::on_call(call);
}

int lead(const char *slot, slot_port, const pack_info *info, const uint8_t *frame, uint32_t length)
{
    driver_call call = {slot, info->phy_id};
    for (const uint32_t word : {uint32_t{info->zero}, uint32_t{info->tx_selector}, info->phy_id, length})
        take(call, word);
    take_bytes(call, frame, length);
    return world::on_call(call);
}

} // namespace

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
    static const std::map<uintptr_t, std::string> names = {
#define NAME(index, name, port) {reinterpret_cast<uintptr_t>(table.name), #name},
        FACMSG_SLOTS(NAME)};
    const auto name = names.find(address);
    return name != names.end() ? name->second : address != 0 && address == latest_allocation ? "pointer" : "";
}

} // namespace world
