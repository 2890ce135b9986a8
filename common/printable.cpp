/* SPDX-License-Identifier: MIT
 *
 * Text of unknown origin, made fit for files and screens.
 */
#include "printable.h"

#include <algorithm>
#include <cstdint>

namespace common
{

/* The forms of a well-formed UTF-8 sequence: ranges of the first and the second byte, and the size. */
struct form {
    unsigned char first_least, first_most, second_least, second_most;
    size_t size;
    uint32_t first_bits;
};
constexpr form forms[] = {
    {0x00, 0x7F, 0x00, 0xFF, 1, 0x7F}, {0xC2, 0xDF, 0x80, 0xBF, 2, 0x1F}, {0xE0, 0xE0, 0xA0, 0xBF, 3, 0x0F},
    {0xE1, 0xEC, 0x80, 0xBF, 3, 0x0F}, {0xED, 0xED, 0x80, 0x9F, 3, 0x0F}, {0xEE, 0xEF, 0x80, 0xBF, 3, 0x0F},
    {0xF0, 0xF0, 0x90, 0xBF, 4, 0x07}, {0xF1, 0xF3, 0x80, 0xBF, 4, 0x07}, {0xF4, 0xF4, 0x80, 0x8F, 4, 0x07},
};

/* Controls, line separators, direction marks, non-characters. */
struct range {
    uint32_t least, most;
};
constexpr range unwanted[] = {{0x00, 0x08},     {0x0B, 0x1F},     {0x7F, 0x9F},     {0x200E, 0x200F},
                              {0x2028, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF}, {0xFFFE, 0xFFFF}};

static bool is_continuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

static bool matches(const form &known, std::string_view text)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byte(0) < known.first_least || byte(0) > known.first_most || text.size() < known.size)
        return false;
    if (known.size > 1 && (byte(1) < known.second_least || byte(1) > known.second_most))
        return false;
    return std::ranges::all_of(
        text.substr(std::min<size_t>(2, known.size), known.size - std::min<size_t>(2, known.size)),
        [](char c) { return is_continuation(static_cast<unsigned char>(c)); });
}

static uint32_t code_of(const form &known, std::string_view sequence)
{
    uint32_t code = static_cast<unsigned char>(sequence[0]) & known.first_bits;
    for (const char c : sequence.substr(1))
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    return code;
}

static bool is_plain(char c)
{
    return (c >= ' ' && c <= '~') || c == '\n' || c == '\t';
}

std::string printable(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const auto plain = static_cast<size_t>(std::ranges::find_if_not(text, is_plain) - text.begin());
        shown += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const auto *known = std::ranges::find_if(forms, [&](const form &one) { return matches(one, text); });
        if (known == std::end(forms)) {
            shown += "\xEF\xBF\xBD";
            text.remove_prefix(1);
            continue;
        }
        const auto sequence = text.substr(0, known->size);
        const uint32_t code = code_of(*known, sequence);
        if (std::ranges::none_of(unwanted,
                                 [&](range not_this) { return code >= not_this.least && code <= not_this.most; }))
            shown += sequence;
        text.remove_prefix(known->size);
    }
    return shown;
}

size_t length(std::string_view text)
{
    return static_cast<size_t>(
        std::ranges::count_if(text, [](char c) { return !is_continuation(static_cast<unsigned char>(c)); }));
}

} // namespace common
