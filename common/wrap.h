/* SPDX-License-Identifier: MIT
 *
 * Sentences on a screen, of 80 columns as a rule.
 */
#ifndef COMMON_WRAP_H
#define COMMON_WRAP_H

#include <string>

namespace text
{

constexpr size_t screen_columns = 80;

/* Breaks text between words. It begins in column indent, and so do the following lines. */
std::string wrapped(const std::string &text, size_t indent, size_t columns = screen_columns);

/* The text and blanks up to a width in characters. */
std::string padded(const std::string &text, size_t width);

} // namespace text

#endif
