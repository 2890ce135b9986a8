/* SPDX-License-Identifier: MIT */
#include "port_list.h"

#include <charconv>

namespace common
{

/* Takes a number off the front of text. */
static std::optional<uint32_t> take_number(std::string_view &text)
{
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

static bool take_char(std::string_view &text, char c)
{
    const bool there = text.starts_with(c);
    if (there)
        text.remove_prefix(1);
    return there;
}

std::optional<std::vector<uint32_t>> parse_list(std::string_view text, uint32_t least, uint32_t most)
{
    std::vector<uint32_t> numbers;
    do {
        const auto first = take_number(text);
        const auto last = take_char(text, '-') ? take_number(text) : first;
        if (!first || !last || *first < least || *last < *first || *last > most)
            return std::nullopt;
        for (uint32_t number = *first; number <= *last; number++)
            numbers.push_back(number);
    } while (take_char(text, ','));
    return text.empty() ? std::optional(numbers) : std::nullopt;
}

} // namespace common
