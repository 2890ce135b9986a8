/* SPDX-License-Identifier: MIT
 *
 * Speed codes and the bits of an ability word.
 */
#ifndef SIM_ABILITY_H
#define SIM_ABILITY_H

#include <cstdint>
#include <span>
#include <string_view>

namespace sim
{

enum speed_code : uint32_t { SPEED_10G = 4, SPEED_2500M = 12, SPEED_5G = 13 };

struct speed_row {
    std::string_view name;
    uint32_t code;
    uint64_t mbps;
};

/* A kind of port as the board file spells it, its bit, and the words in which it belongs if the port has them. */
struct flag_row {
    std::string_view name;
    uint32_t bit;
    bool in_copper;
    bool in_fiber;
};

std::span<const speed_row> speeds();
std::span<const flag_row> ability_flags();

/* Line rate of a speed code in Mbit/s; 0 for a code without one. */
uint64_t speed_mbps(uint32_t code);
/* Name of a speed code, "?" when it has none. */
std::string_view speed_name(uint32_t code);

/* The bit of a known speed code with duplex code 1 or 2; 0 for any other code. Both duplexes of 5G have the same bit,
 * since the other bit of its pair marks high-power ports. */
uint32_t ability_bit(uint32_t speed, uint32_t duplex);

/* Whether an ability word allows a mode. Duplex code 0 leaves the duplex to the port. */
bool ability_allows(uint32_t word, uint32_t speed, uint32_t duplex);

} // namespace sim

#endif
