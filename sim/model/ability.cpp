/* SPDX-License-Identifier: MIT
 *
 * Speed codes and the bits of an ability word.
 */
#include "ability.h"

#include <algorithm>

#include "facmsg_driver.h"

namespace sim
{

static constexpr speed_row SPEEDS[] = {
    {"10M", 1, 10},    {"100M", 2, 100},  {"1G", 3, 1000},    {"10G", 4, 10000}, {"FC2G", 7, 2000},
    {"FC4G", 8, 4000}, {"FC8G", 9, 8000}, {"2.5G", 12, 2500}, {"5G", 13, 5000},
};

static constexpr flag_row FLAGS[] = {
    {"hpoe", FACMSG_ABILITY_HPOE, true, false},
    {"poe", FACMSG_ABILITY_POE, true, false},
    {"medium_switch", FACMSG_ABILITY_MEDIUM_SWITCH, true, true},
    {"fc_ethernet", FACMSG_ABILITY_FC_ETHERNET, false, true},
    {"any_speed", FACMSG_ABILITY_ANY_SPEED, true, true},
    {"auto_duplex", FACMSG_ABILITY_DUPLEX_0, true, true},
};

std::span<const speed_row> speeds()
{
    return SPEEDS;
}

std::span<const flag_row> ability_flags()
{
    return FLAGS;
}

static const speed_row *find_speed(uint32_t code)
{
    const auto *row = std::find_if(std::begin(SPEEDS), std::end(SPEEDS), [=](auto &s) { return s.code == code; });
    return row == std::end(SPEEDS) ? nullptr : row;
}

uint64_t speed_mbps(uint32_t code)
{
    const auto *row = find_speed(code);
    return row ? row->mbps : 0;
}

std::string_view speed_name(uint32_t code)
{
    const auto *row = find_speed(code);
    return row ? row->name : "?";
}

uint32_t ability_bit(uint32_t speed, uint32_t duplex)
{
    if (!find_speed(speed) || duplex < 1 || duplex > 2)
        return 0;
    return UINT32_C(1) << (2 * (speed - 1) + (speed == SPEED_5G ? 0 : duplex - 1));
}

bool ability_allows(uint32_t word, uint32_t speed, uint32_t duplex)
{
    const auto bits = duplex ? ability_bit(speed, duplex) : ability_bit(speed, 1) | ability_bit(speed, 2);
    return (word & bits) != 0;
}

} // namespace sim
