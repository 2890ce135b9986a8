/* SPDX-License-Identifier: MIT
 *
 * Text for files and screens, as UTF-8. Widths and columns count characters; wide and combining ones count as one.
 */
#ifndef COMMON_TEXT_H
#define COMMON_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace common
{

constexpr size_t SCREEN_COLUMNS = 80;

/* Text of unknown origin as valid UTF-8: bytes that are none become U+FFFD. Left out are control characters other than
 * tab and line feed, characters that turn the direction of writing, and those that XML does not know. */
std::string printable(std::string_view text);

/* The text with control characters as \n, \t or \x1b, so that it stays one line. */
std::string escaped(std::string_view text);

/* How many characters the text has. */
size_t length(std::string_view text);

/* The text and blanks up to a width. */
std::string padded(const std::string &text, size_t width);

/* Breaks text between words, and keeps what blanks are between them. It begins in column indent, and so do the
 * following lines. A word longer than a line is not broken. */
std::string wrapped(const std::string &text, size_t indent, size_t columns = SCREEN_COLUMNS);

/* The same of text that begins in another column than the following lines. */
std::string folded(const std::string &text, size_t column, size_t indent, size_t columns);

} // namespace common

#endif
