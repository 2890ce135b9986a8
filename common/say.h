/* SPDX-License-Identifier: MIT
 *
 * Lines for whoever runs a program, whatever stands in them and wherever stderr leads.
 */
#ifndef COMMON_SAY_H
#define COMMON_SAY_H

#include <string>
#include <string_view>

namespace common
{

/* The text with control characters as \n, \t or \x1b, so that it stays one line. */
std::string escaped(std::string_view text);

/* Writes one line to stderr, escaped. A stderr that is full or closed changes nothing else. */
void say(std::string_view line);

/* Writes text to stdout as it is. */
void print(std::string_view text);

/* Whether stdout may have colour: it is a terminal that knows it, and NO_COLOR is unset or empty. */
bool colour_wanted();

} // namespace common

#endif
