/* SPDX-License-Identifier: MIT
 *
 * Bytes in hexadecimal.
 */
#ifndef STATION_HEX_H
#define STATION_HEX_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace station
{

/* Pairs of digits, with blanks anywhere between or inside the pairs. Nothing when there is anything else. */
std::optional<std::vector<uint8_t>> parse_hex(const std::string &text);

/* Lines of an offset and 16 bytes. Lines equal to the one before are left out, with one "*" in their place. */
std::string hex_dump(const std::vector<uint8_t> &bytes);

} // namespace station

#endif
