/* SPDX-License-Identifier: MIT
 *
 * Numbers, times and names in words, and lists of numbers as people write them.
 */
#ifndef COMMON_WORDS_H
#define COMMON_WORDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace common
{

/* "1 port", "2 ports"; the noun takes an s. */
std::string counted(uint64_t count, std::string_view noun);

/* "5 s", "7.3 s", "26 s", "4 min", "4 min 12 s", "2 h 5 min"; of seconds from 0 on. */
std::string duration_text(double seconds);

/* The names with commas between them. */
std::string joined(const std::vector<std::string_view> &names);

/* What to say after a name that is not among those allowed: ", did you mean X?" or, when none is similar,
 * ", expected one of ...". The dashes of options are no likeness. */
std::string expected_one_of(std::string_view name, const std::vector<std::string_view> &allowed);

/* The numbers of a list of ports, or of other small numbers, such as "7" or "1-4,8", in its order, each of them from
 * least to most. Items have commas between them, without blanks; an item is a decimal number, or two with a dash
 * between them, the second not below the first. Nothing when the text is no such list; a list has at least one item. */
std::optional<std::vector<uint32_t>> parse_list(std::string_view text, uint32_t least, uint32_t most);

} // namespace common

#endif
