/* SPDX-License-Identifier: MIT */
#include "text.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>
#include <utf8.h>

namespace common
{

/* Controls, line separators, direction marks, non-characters. */
struct code_range {
    uint32_t least, most;
};
static constexpr code_range UNWANTED[] = {{0x00, 0x08},     {0x0B, 0x1F},     {0x7F, 0x9F},     {0x200E, 0x200F},
                                          {0x2028, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF}, {0xFFFE, 0xFFFF}};
static constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD"; /* U+FFFD */

static bool is_wanted(uint32_t code)
{
    return std::ranges::none_of(UNWANTED, [=](code_range range) { return code >= range.least && code <= range.most; });
}

/* Adds what is wanted of a text that is valid UTF-8. */
static void add_wanted(std::string &shown, std::string_view valid)
{
    for (const auto *at = valid.begin(); at != valid.end();) {
        const auto *start = at;
        if (is_wanted(utf8::unchecked::next(at)))
            shown.append(start, at);
    }
}

static std::string escaped_char(char c)
{
    const auto code = static_cast<unsigned char>(c);
    if (c == '\n')
        return "\\n";
    if (c == '\t')
        return "\\t";
    return code < ' ' || code == 0x7F ? fmt::format("\\x{:02x}", code) : std::string(1, c);
}

std::string printable(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const auto *end = utf8::find_invalid(text.begin(), text.end());
        const auto valid = static_cast<size_t>(end - text.begin());
        add_wanted(shown, text.substr(0, valid));
        if (valid == text.size())
            break;
        shown += REPLACEMENT;
        text.remove_prefix(valid + 1);
    }
    return shown;
}

std::string escaped(std::string_view text)
{
    std::string shown;
    for (const char c : text)
        shown += escaped_char(c);
    return shown;
}

/* Counts the bytes that begin a character, as the text may be no valid UTF-8. */
size_t length(std::string_view text)
{
    return static_cast<size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string padded(const std::string &text, size_t width)
{
    return text + std::string(width - std::min(width, length(text)), ' ');
}

std::string folded(const std::string &text, size_t column, size_t indent, size_t columns)
{
    constexpr const char *BLANKS = " \t\n";
    std::string lines;
    for (size_t at = text.find_first_not_of(BLANKS), gap = 0; at != std::string::npos;) {
        const size_t end = std::min(text.find_first_of(BLANKS, at), text.size());
        const std::string word = text.substr(at, end - at);
        if (!lines.empty() && column + gap + length(word) > columns) {
            lines += "\n" + std::string(indent, ' ');
            column = indent;
            gap = 0;
        }
        lines += std::string(gap, ' ') + word;
        column += gap + length(word);
        at = text.find_first_not_of(BLANKS, end);
        gap = at - end;
    }
    return lines;
}

std::string wrapped(const std::string &text, size_t indent, size_t columns)
{
    return folded(text, indent, indent, columns);
}

} // namespace common
