/* SPDX-License-Identifier: MIT
 *
 * Reads what a board file says about PoE: the controller, and the devices that it powers.
 */
#include <fmt/format.h>

#include "board_sections.h"

namespace sim
{

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
