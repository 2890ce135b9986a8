/* SPDX-License-Identifier: MIT
 *
 * Sentences on a screen, of 80 columns as a rule.
 */
#include "wrap.h"

#include <algorithm>
#include <sstream>

#include "printable.h"

namespace text
{

std::string wrapped(const std::string &text, size_t indent, size_t columns)
{
    std::string lines;
    size_t column = indent;
    std::istringstream words(text);
    for (std::string word; words >> word; column += length(word)) {
        const bool first = lines.empty();
        if (!first && column + 1 + length(word) > columns) {
            lines += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (!first) {
            lines += " ";
            column++;
        }
        lines += word;
    }
    return lines;
}

std::string padded(const std::string &text, size_t width)
{
    return text + std::string(width - std::min(width, length(text)), ' ');
}

} // namespace text
