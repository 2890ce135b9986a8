/* SPDX-License-Identifier: MIT
 *
 * Sentences on a screen, of 80 columns as a rule.
 */
#include "wrap.h"

#include <algorithm>
#include <unistd.h>

#include "printable.h"
#include "terminal.h"

namespace common
{

std::string folded(const std::string &text, size_t column, size_t indent, size_t columns)
{
    constexpr const char *blanks = " \t\n";
    std::string lines;
    for (size_t at = text.find_first_not_of(blanks), gap = 0; at != std::string::npos;) {
        const size_t end = std::min(text.find_first_of(blanks, at), text.size());
        const std::string word = text.substr(at, end - at);
        if (!lines.empty() && column + gap + length(word) > columns) {
            lines += "\n" + std::string(indent, ' ');
            column = indent;
            gap = 0;
        }
        lines += std::string(gap, ' ') + word;
        column += gap + length(word);
        at = text.find_first_not_of(blanks, end);
        gap = at - end;
    }
    return lines;
}

std::string wrapped(const std::string &text, size_t indent, size_t columns)
{
    return folded(text, indent, indent, columns);
}

size_t stdout_columns()
{
    constexpr size_t most = 100; /* longer lines are hard to read */
    return std::min(most, terminal_of(STDOUT_FILENO).width);
}

std::string padded(const std::string &text, size_t width)
{
    return text + std::string(width - std::min(width, length(text)), ' ');
}

} // namespace common
