/* SPDX-License-Identifier: MIT
 *
 * Reads what a board file says about its ports and about PoE: the controller, and the devices that it powers.
 */
#include <algorithm>

#include <fmt/format.h>

#include "board_sections.h"
#include "sim/model/ability.h"

namespace sim
{

static const std::vector<std::string_view> MEDIUM_NAMES = {"copper", "fiber"};      /* by medium code */
static const std::vector<std::string_view> DUPLEX_NAMES = {"auto", "half", "full"}; /* by duplex code */

template <class Rows> static std::vector<std::string_view> names_of(const Rows &rows)
{
    std::vector<std::string_view> names;
    for (const auto &row : rows)
        names.push_back(row.name);
    return names;
}

static uint32_t index_of(const std::vector<std::string_view> &names, std::string_view name)
{
    return static_cast<uint32_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

static uint32_t speed_code(std::string_view name)
{
    return std::ranges::find(SPEEDS, name, &speed_row::name)->code;
}

/* The ability word that the speeds of one medium make up; 0 when the port does not have it. */
static uint32_t speed_bits(const common::toml_reader &reader, std::string_view key)
{
    auto duplexes = reader.some_of("duplexes", {"half", "full"});
    if (duplexes.empty())
        duplexes = {"half", "full"};
    uint32_t word = 0;
    for (const auto &speed : reader.some_of(key, names_of(SPEEDS))) {
        for (const auto &duplex : duplexes)
            word |= ability_bit(speed_code(speed), index_of(DUPLEX_NAMES, duplex));
    }
    return word;
}

static void add_flags(const common::toml_reader &reader, port_ability_row &ability)
{
    for (const auto &name : reader.some_of("flags", names_of(ABILITY_FLAGS))) {
        const auto &row = *std::ranges::find(ABILITY_FLAGS, name, &flag_row::name);
        const bool copper = row.in_copper && ability.copper;
        const bool fiber = row.in_fiber && ability.fiber;
        if (!copper && !fiber)
            reader.fail("flags", fmt::format("flag {} is on ports without {} speeds, expected ports that have some",
                                             name, row.in_copper ? "copper" : "fiber"));
        ability.copper |= copper ? row.bit : 0;
        ability.fiber |= fiber ? row.bit : 0;
    }
}

static port_ability_row read_ability(const common::toml_reader &reader)
{
    constexpr std::string_view READABLE[] = {"copper_speeds", "fiber_speeds", "duplexes", "flags"};
    if (reader.has("copper_ability") || reader.has("fiber_ability")) {
        for (const auto key : READABLE) {
            if (reader.has(key))
                reader.fail(key, fmt::format("found {} beside an ability word, expected one or the other", key));
        }
        return {reader.word("copper_ability", common::ANY_WORD, 0), reader.word("fiber_ability", common::ANY_WORD, 0)};
    }
    port_ability_row ability = {speed_bits(reader, "copper_speeds"), speed_bits(reader, "fiber_speeds")};
    add_flags(reader, ability);
    return ability;
}

/* The fastest mode of an ability word, Ethernet before Fibre Channel; speed 0 when it has none. */
static port_mode fastest(uint32_t word)
{
    const auto rank = [](const speed_row &row) { return std::pair(!row.name.starts_with("FC"), row.mbps); };
    const speed_row *best = nullptr;
    for (const auto &row : SPEEDS) {
        if (ability_allows(word, row.code, 0) && (!best || rank(row) > rank(*best)))
            best = &row;
    }
    if (!best)
        return {};
    return {best->code, ability_allows(word, best->code, 2) ? 2u : 1u};
}

/* Sets how the ports run at power-up: on the medium asked for, at the speed asked for or the fastest. */
static void read_modes(const common::toml_reader &reader, port_config &port)
{
    const uint32_t words[] = {port.ability.copper, port.ability.fiber};
    port.modes = {fastest(words[0]), fastest(words[1])};
    if (!port.modes[0].speed && !port.modes[1].speed)
        reader.fail("ports", "the ports have no speed, expected copper_speeds, fiber_speeds or an ability word");
    port.medium = port.modes[0].speed ? FACMSG_MEDIUM_COPPER : FACMSG_MEDIUM_FIBER;
    if (const auto medium = reader.one_of("medium", MEDIUM_NAMES))
        port.medium = index_of(MEDIUM_NAMES, *medium);
    auto &mode = port.modes[port.medium];
    if (!mode.speed)
        reader.fail("medium", "the ports have no speed on this medium, expected the other one");
    if (const auto speed = reader.one_of("speed", names_of(SPEEDS)))
        mode.speed = speed_code(*speed);
    if (const auto duplex = reader.one_of("duplex", DUPLEX_NAMES))
        mode.duplex = index_of(DUPLEX_NAMES, *duplex);
    if (!ability_allows(words[port.medium], mode.speed, mode.duplex))
        reader.fail(reader.has("speed") ? "speed" : "duplex",
                    fmt::format("the ports cannot run {} {} duplex, expected one of their own modes",
                                speed_of(mode.speed).name, DUPLEX_NAMES[mode.duplex]));
}

void add_port(const common::toml_reader &reader, const port_config &port, board_config &board)
{
    for (const auto &[number, other] : board.ports) {
        if (other.phy_id == port.phy_id && number != port.number)
            reader.fail("phy_id_offset", fmt::format("port {} gets phy id {}, which port {} has, expected another",
                                                     port.number, port.phy_id, number));
    }
    if (!board.ports.emplace(port.number, port).second)
        reader.fail("ports", fmt::format("port {} is described twice, expected one description", port.number));
}

void read_ports(const std::string &file, const toml::table &table, board_config &board)
{
    const common::toml_reader reader(file, table,
                                     {"ports", "copper_speeds", "fiber_speeds", "duplexes", "flags", "copper_ability",
                                      "fiber_ability", "medium", "speed", "duplex", "phy_id_offset", "link_up_ms",
                                      "host_word_0", "host_word_5"});
    if (!reader.has("ports"))
        reader.fail("ports", "found no key ports, expected the numbers of the ports described here");
    port_config port;
    port.ability = read_ability(reader);
    read_modes(reader, port);
    port.link_up_ms = reader.word("link_up_ms", {0, 600000}, 300);
    port.host_word_0 = reader.word("host_word_0", common::ANY_WORD, 0);
    port.host_word_5 = reader.word("host_word_5", common::ANY_WORD, 0);
    const auto offset = reader.word("phy_id_offset", PHY_ID_OFFSETS, DEFAULT_PHY_ID_OFFSET);
    for (const auto number : reader.ports("ports", FACMSG_MAX_PORTS)) {
        port.number = number;
        port.phy_id = offset + number;
        add_port(reader, port, board);
    }
}

void read_poe(const std::string &file, const toml::table &table, board_config &board)
{
    const common::toml_reader reader(file, table, {"supply_mv", "detect_ms", "firmware", "new_firmware", "upgrade_ms"});
    auto &poe = board.poe;
    poe.supply_mv = reader.word("supply_mv", {0, 65000}, poe.supply_mv);
    poe.detect_ms = reader.word("detect_ms", {1, 600000}, poe.detect_ms);
    poe.firmware = reader.word("firmware", common::ANY_WORD, poe.firmware);
    poe.new_firmware = reader.word("new_firmware", common::ANY_WORD, poe.new_firmware);
    poe.upgrade_ms = reader.word("upgrade_ms", {1, 3600000}, poe.upgrade_ms);
}

void read_load(const std::string &file, const toml::table &table, board_config &board)
{
    const common::toml_reader reader(file, table, {"ports", "class", "draw_mw"});
    for (const auto key : {"ports", "class", "draw_mw"}) {
        if (!reader.has(key))
            reader.fail(key, fmt::format("found no key {}, expected ports, class and draw_mw of a load", key));
    }
    const poe_load load = {reader.word("class", {0, 8}, 0), reader.word("draw_mw", {0, 200000}, 0)};
    for (const auto number : reader.ports("ports", FACMSG_MAX_PORTS)) {
        const auto found = board.ports.find(number);
        const auto ability = found == board.ports.end() ? port_ability_row{} : found->second.ability;
        if (((ability.copper | ability.fiber) & (FACMSG_ABILITY_POE | FACMSG_ABILITY_HPOE)) == 0)
            reader.fail("ports", fmt::format("ports names port {}, expected a port with PoE", number));
        found->second.load = load;
    }
}

} // namespace sim
