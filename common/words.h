/* SPDX-License-Identifier: MIT
 *
 * Numbers, times and names in words.
 */
#ifndef COMMON_WORDS_H
#define COMMON_WORDS_H

#include <cstdint>
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

/* What to say after a name that is not among the known ones: ", did you mean X?" or, when none is similar,
 * ", expected one of ...". The dashes of options are no likeness. */
std::string expected_one_of(std::string_view name, const std::vector<std::string_view> &known);

} // namespace common

#endif
