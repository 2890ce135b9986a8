/* SPDX-License-Identifier: MIT
 *
 * Sentences on a screen, of 80 columns as a rule.
 */
#ifndef COMMON_WRAP_H
#define COMMON_WRAP_H

#include <string>

namespace common
{

constexpr size_t screen_columns = 80;

/* Breaks text between words, and keeps what blanks are between them. It begins in column indent, and so do the
 * following lines. */
std::string wrapped(const std::string &text, size_t indent, size_t columns = screen_columns);

/* The same of text that begins in another column than the following lines. */
std::string folded(const std::string &text, size_t column, size_t indent, size_t columns);

/* How wide sentences on stdout may be: as its terminal, but at most 100; 80 when it is none. */
size_t stdout_columns();

/* The text and blanks up to a width in characters. */
std::string padded(const std::string &text, size_t width);

} // namespace common

#endif
