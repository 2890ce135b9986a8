/* SPDX-License-Identifier: MIT
 *
 * The terminal that an output leads to, and the one line on it that is rewritten in place.
 */
#ifndef COMMON_TERMINAL_H
#define COMMON_TERMINAL_H

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

/* Shows the text in place of the line that the cursor is in, escaped, and cut to the terminal's width. For a lively
 * terminal only. */
void rewrite_line(int fd, std::string_view text);
void clear_line(int fd);

} // namespace common

#endif
