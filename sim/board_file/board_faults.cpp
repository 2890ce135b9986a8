/* SPDX-License-Identifier: MIT
 *
 * Reads the [[faults]] tables of a board file.
 */
#include <algorithm>

#include <fmt/format.h>

#include "board_sections.h"
#include "common/nearest.h"
#include "sim/driver/driver_table.h"

namespace sim
{

static constexpr common::number_range SOME_MS = {1, 3600000};
static constexpr common::number_range SOME_FRAMES = {1, 1000000};

/* A number that the fault cannot do without. */
static uint32_t needed(const common::toml_reader &reader, std::string_view key, common::number_range range)
{
    if (!reader.has(key))
        reader.fail(key, fmt::format("found no key {}, expected a whole number from {} to {}", key, range.lowest,
                                     range.highest));
    return reader.word(key, range, 0);
}

static void dead_link(const common::toml_reader &, port_faults &faults)
{
    faults.dead_link = true;
}

static void late_link(const common::toml_reader &reader, port_faults &faults)
{
    faults.late_ms = needed(reader, "late_ms", SOME_MS);
}

static void flapping_link(const common::toml_reader &reader, port_faults &faults)
{
    faults.flap_up_ms = needed(reader, "up_ms", SOME_MS);
    faults.flap_down_ms = needed(reader, "down_ms", SOME_MS);
}

static void frame_loss(const common::toml_reader &reader, port_faults &faults)
{
    faults.lose_every = needed(reader, "every", SOME_FRAMES);
}

static void fcs_errors(const common::toml_reader &reader, port_faults &faults)
{
    faults.damage_every = needed(reader, "every", SOME_FRAMES);
}

static void stuck_counter(const common::toml_reader &, port_faults &faults)
{
    faults.stuck_counter = true;
}

static void prbs_errors(const common::toml_reader &reader, port_faults &faults)
{
    faults.prbs_errors_per_s = needed(reader, "per_second", SOME_FRAMES);
}

static void poe_no_detection(const common::toml_reader &, port_faults &faults)
{
    faults.poe.no_detection = true;
}

static void poe_stays_off(const common::toml_reader &, port_faults &faults)
{
    faults.poe.stays_off = true;
}

static void poe_stays_on(const common::toml_reader &, port_faults &faults)
{
    faults.poe.stays_on = true;
}

static void poe_no_overload(const common::toml_reader &, port_faults &faults)
{
    faults.poe.never_trips = true;
}

static void poe_late_overload(const common::toml_reader &reader, port_faults &faults)
{
    faults.poe.trips_from = needed(reader, "from", {1, 1000});
}

static void poe_wrong_class(const common::toml_reader &reader, port_faults &faults)
{
    faults.poe.seen_class = needed(reader, "class", {0, 8});
}

static void poe_low_supply(const common::toml_reader &reader, port_faults &faults)
{
    faults.poe.supply_mv = needed(reader, "supply_mv", {0, 65000});
}

/* A kind of fault that a port has; keys are those beside kind and ports. */
struct port_fault_row {
    std::string_view kind;
    std::vector<std::string_view> keys;
    void (*apply)(const common::toml_reader &reader, port_faults &faults);
};

static const port_fault_row PORT_FAULTS[] = {
    {"dead_link", {}, dead_link},
    {"late_link", {"late_ms"}, late_link},
    {"flapping_link", {"up_ms", "down_ms"}, flapping_link},
    {"frame_loss", {"every"}, frame_loss},
    {"fcs_errors", {"every"}, fcs_errors},
    {"stuck_counter", {}, stuck_counter},
    {"prbs_errors", {"per_second"}, prbs_errors},
    {"poe_no_detection", {}, poe_no_detection},
    {"poe_stays_off", {}, poe_stays_off},
    {"poe_stays_on", {}, poe_stays_on},
    {"poe_no_overload", {}, poe_no_overload},
    {"poe_late_overload", {"from"}, poe_late_overload},
    {"poe_wrong_class", {"class"}, poe_wrong_class},
    {"poe_low_supply", {"supply_mv"}, poe_low_supply},
};
static constexpr std::string_view FAILING_CALL = "failing_call";
static constexpr std::string_view FPGA_SILENT = "fpga_silent";

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
    keys.insert(keys.end(), row.keys.begin(), row.keys.end());
    const common::toml_reader reader(file, table, keys);
    if (!reader.has("ports"))
        reader.fail("ports", "found no key ports, expected the ports that have the fault");
    for (const auto number : reader.ports("ports", FACMSG_MAX_PORTS))
        row.apply(reader, board.ports.at(known_port(reader, number, board)).faults);
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
    const auto *row =
        std::find_if(std::begin(PORT_FAULTS), std::end(PORT_FAULTS), [&](auto &known) { return known.kind == *kind; });
    read_port_fault(file, table, *row, board);
}

} // namespace sim
