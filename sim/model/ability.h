/* SPDX-License-Identifier: MIT
 *
 * Speed codes and the bits of an ability word.
 */
#ifndef SIM_ABILITY_H
#define SIM_ABILITY_H

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "facmsg_driver.h"

namespace sim
{

enum speed_code : uint32_t { SPEED_10G = 4, SPEED_2500M = 12, SPEED_5G = 13 };

struct speed_row {
    std::string_view name;
    uint32_t code;
    uint64_t mbps; /* line rate */
};

inline constexpr speed_row SPEEDS[] = {
    {"10M", 1, 10},         {"100M", 2, 100},  {"1G", 3, 1000},   {"10G", SPEED_10G, 10000},
    {"FC2G", 7, 2000},      {"FC4G", 8, 4000}, {"FC8G", 9, 8000}, {"2.5G", SPEED_2500M, 2500},
    {"5G", SPEED_5G, 5000},
};

/* A kind of port as the board file spells it, its bit, and the words in which it belongs if the port has them. */
struct flag_row {
    std::string_view name;
    uint32_t bit;
    bool in_copper;
    bool in_fiber;
};

inline constexpr flag_row ABILITY_FLAGS[] = {
    {"hpoe", FACMSG_ABILITY_HPOE, true, false},
    {"poe", FACMSG_ABILITY_POE, true, false},
    {"medium_switch", FACMSG_ABILITY_MEDIUM_SWITCH, true, true},
    {"fc_ethernet", FACMSG_ABILITY_FC_ETHERNET, false, true},
    {"any_speed", FACMSG_ABILITY_ANY_SPEED, true, true},
    {"auto_duplex", FACMSG_ABILITY_DUPLEX_0, true, true},
};

/* The row of a speed code; for a code without one a row named "?" of code 0 and rate 0. */
constexpr speed_row speed_of(uint32_t code)
{
    const auto *row = std::ranges::find(SPEEDS, code, &speed_row::code);
    return row == std::end(SPEEDS) ? speed_row{"?", 0, 0} : *row;
}

/* The bit of a known speed code with duplex code 1 or 2; 0 for any other code. Both duplexes of 5G have the same bit,
 * since the other bit of its pair marks high-power ports. */
constexpr uint32_t ability_bit(uint32_t speed, uint32_t duplex)
{
    const uint32_t code = speed_of(speed).code;
    if (code == 0 || duplex < 1 || duplex > 2)
        return 0;
    return UINT32_C(1) << (2 * (code - 1) + (speed == SPEED_5G ? 0 : duplex - 1));
}

/* Whether an ability word allows a mode. Duplex code 0 leaves the duplex to the port. */
constexpr bool ability_allows(uint32_t word, uint32_t speed, uint32_t duplex)
{
    const auto bits = duplex ? ability_bit(speed, duplex) : ability_bit(speed, 1) | ability_bit(speed, 2);
    return (word & bits) != 0;
}

} // namespace sim

#endif
