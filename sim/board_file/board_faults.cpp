/* SPDX-License-Identifier: MIT
 *
 * Reads the [[faults]] tables of a board file.
 */
#include <algorithm>

#include <fmt/format.h>

#include "board_sections.h"
#include "common/toml_reader.h"
#include "common/words.h"
#include "sim/driver/driver_table.h"

namespace sim
{

static constexpr common::number_range SOME_MS = {1, 3600000};
static constexpr common::number_range SOME_FRAMES = {1, 1000000};

/* A number that a fault cannot do without: its key, its range, and where it goes. */
struct fault_number {
    std::string_view key;
    common::number_range range;
    void (*set)(port_faults &faults, uint32_t value);
};

/* A kind of fault that a port has: what it sets, and the numbers that go with it. */
struct port_fault_row {
    std::string_view kind;
    std::vector<fault_number> numbers;
    void (*set)(port_faults &faults) = [](port_faults &) {};
};

#define SETS(member) [](port_faults &faults) { faults.member = true; }
#define TAKES(member) [](port_faults &faults, uint32_t value) { faults.member = value; }
static const port_fault_row PORT_FAULTS[] = {
    {"dead_link", {}, SETS(dead_link)},
    {"late_link", {{"late_ms", SOME_MS, TAKES(late_ms)}}},
    {"flapping_link", {{"up_ms", SOME_MS, TAKES(flap_up_ms)}, {"down_ms", SOME_MS, TAKES(flap_down_ms)}}},
    {"frame_loss", {{"every", SOME_FRAMES, TAKES(lose_every)}}},
    {"fcs_errors", {{"every", SOME_FRAMES, TAKES(damage_every)}}},
    {"stuck_counter", {}, SETS(stuck_counter)},
    {"prbs_errors", {{"per_second", SOME_FRAMES, TAKES(prbs_errors_per_s)}}},
    {"poe_no_detection", {}, SETS(poe.no_detection)},
    {"poe_stays_off", {}, SETS(poe.stays_off)},
    {"poe_stays_on", {}, SETS(poe.stays_on)},
    {"poe_no_overload", {}, SETS(poe.never_trips)},
    {"poe_late_overload", {{"from", {1, 1000}, TAKES(poe.trips_from)}}},
    {"poe_wrong_class", {{"class", {0, 8}, TAKES(poe.seen_class)}}},
    {"poe_low_supply", {{"supply_mv", {0, 65000}, TAKES(poe.supply_mv)}}},
};
#undef SETS
#undef TAKES
static constexpr std::string_view FAILING_CALL = "failing_call";
static constexpr std::string_view FPGA_SILENT = "fpga_silent";

static uint32_t value_of(const common::toml_reader &reader, const fault_number &number)
{
    if (!reader.has(number.key))
        reader.fail(number.key, fmt::format("found no key {}, expected a whole number from {} to {}", number.key,
                                            number.range.lowest, number.range.highest));
    return reader.word(number.key, number.range, 0);
}

static uint32_t known_port(const common::toml_reader &reader, uint32_t number, const board_config &board)
{
    if (!board.ports.count(number))
        reader.fail("ports", fmt::format("ports names port {}, expected a port of the board", number));
    return number;
}

static void read_port_fault(const std::string &file, const toml::table &table, const port_fault_row &row,
                            board_config &board)
{
    std::vector<std::string_view> keys = {"kind", "ports"};
    for (const auto &number : row.numbers)
        keys.push_back(number.key);
    const common::toml_reader reader(file, table, keys);
    if (!reader.has("ports"))
        reader.fail("ports", "found no key ports, expected the ports that have the fault");
    for (const auto port : reader.ports("ports", FACMSG_MAX_PORTS)) {
        auto &faults = board.ports.at(known_port(reader, port, board)).faults;
        row.set(faults);
        for (const auto &number : row.numbers)
            number.set(faults, value_of(reader, number));
    }
}

static void read_failing_call(const std::string &file, const toml::table &table, board_config &board)
{
    const common::toml_reader reader(file, table, {"kind", "slot", "ports", "from_call", "calls", "result"});
    const auto slot = reader.one_of("slot", slot_names());
    if (!slot)
        reader.fail("slot", "found no key slot, expected the name of the driver slot that fails");
    call_fault fault;
    fault.slot = *slot;
    fault.from_call = reader.word("from_call", {1, UINT32_MAX}, fault.from_call);
    fault.calls = reader.word("calls", common::ANY_WORD, fault.calls);
    fault.result = static_cast<int>(reader.number("result", {INT32_MIN, INT32_MAX}).value_or(fault.result));
    if (fault.result == 0)
        reader.fail("result", "result is 0, which is success, expected any other number");
    if (!reader.has("ports"))
        board.call_faults.push_back(fault);
    for (const auto number : reader.ports("ports", FACMSG_MAX_PORTS)) {
        fault.port = known_port(reader, number, board);
        board.call_faults.push_back(fault);
    }
}

static void read_fpga_silent(const std::string &file, const toml::table &table, board_config &board)
{
    const common::toml_reader no_further_keys(file, table, {"kind"});
    board.fpga_silent = true;
}

static std::vector<std::string_view> kinds()
{
    std::vector<std::string_view> names = {FAILING_CALL};
    for (const auto &row : PORT_FAULTS)
        names.push_back(row.kind);
    names.push_back(FPGA_SILENT);
    return names;
}

void read_fault(const std::string &file, const toml::table &table, board_config &board)
{
    std::vector<std::string_view> any_key;
    for (const auto &[key, value] : table)
        any_key.push_back(key.str());
    const common::toml_reader reader(file, table, any_key); /* which keys are right depends on the kind */
    const auto kind = reader.one_of("kind", kinds());
    if (!kind)
        reader.fail("kind", fmt::format("found no key kind, expected one of {}", common::joined(kinds())));
    if (*kind == FAILING_CALL)
        return read_failing_call(file, table, board);
    if (*kind == FPGA_SILENT)
        return read_fpga_silent(file, table, board);
    read_port_fault(file, table, *std::ranges::find(PORT_FAULTS, *kind, &port_fault_row::kind), board);
}

} // namespace sim
