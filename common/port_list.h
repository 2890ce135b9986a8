/* SPDX-License-Identifier: MIT
 *
 * Lists of ports, or of other small numbers, as people write them: "7", "1-4,8".
 */
#ifndef COMMON_PORT_LIST_H
#define COMMON_PORT_LIST_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace common
{

/* The numbers of a list in its order, each of them from least to most. Items have commas between them, without blanks;
 * an item is a decimal number, or two with a dash between them, the second not below the first. Nothing when the text
 * is no such list; a list has at least one item. */
std::optional<std::vector<uint32_t>> parse_list(std::string_view text, uint32_t least, uint32_t most);

} // namespace common

#endif
