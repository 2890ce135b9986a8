/* SPDX-License-Identifier: MIT
 *
 * The terminals that stdout and stderr lead to, and lines for whoever looks at them.
 */
#ifndef COMMON_TERMINAL_H
#define COMMON_TERMINAL_H

#include <cstddef>
#include <string_view>

namespace common
{

struct terminal {
    bool there;   /* it is a terminal at all */
    bool lively;  /* and one that takes escape sequences: a line may be rewritten, text may have colour */
    size_t width; /* in characters: 40 to 200, or 80 where nobody knows */
};

/* Asked anew each time, as people resize windows. */
terminal terminal_of(int fd);

/* Whether stdout may have colour: it is a terminal that knows it, and NO_COLOR is unset or empty. */
bool colour_wanted();

/* How wide sentences on stdout may be: as its terminal, but at most 100; 80 when it is none. */
size_t stdout_columns();

/* Writes one line to stderr, escaped (text.h), folded to a terminal's width. A stderr that is full or closed changes
 * nothing else. */
void say(std::string_view line);

/* Writes text to stdout as it is. */
void print(std::string_view text);

/* Shows the text in place of the line that the cursor is in, escaped, and cut to the terminal's width. For a lively
 * terminal only. */
void rewrite_line(int fd, std::string_view text);
void clear_line(int fd);

} // namespace common

#endif
