/* SPDX-License-Identifier: MIT
 *
 * Text of unknown origin, made fit for files and screens.
 */
#ifndef COMMON_PRINTABLE_H
#define COMMON_PRINTABLE_H

#include <string>
#include <string_view>

namespace common
{

/* The text as valid UTF-8: bytes that are none become U+FFFD. Left out are control characters other than tab and line
 * feed, characters that turn the direction of writing, and those that XML does not know. */
std::string printable(std::string_view text);

/* How many characters of UTF-8 the text has; wide and combining ones count as one. */
size_t length(std::string_view text);

} // namespace common

#endif
