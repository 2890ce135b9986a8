/* SPDX-License-Identifier: MIT
 *
 * Bytes in hexadecimal.
 */
#include "hex.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <span>

namespace station
{

static bool is_blank(unsigned char letter)
{
    return std::isspace(letter) != 0;
}

std::optional<std::vector<uint8_t>> parse_hex(const std::string &text)
{
    std::string digits = text;
    std::erase_if(digits, is_blank);
    const bool valid = std::ranges::all_of(digits, [](unsigned char digit) { return std::isxdigit(digit) != 0; });
    if (!valid || digits.size() % 2 != 0)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string hex_dump(const std::vector<uint8_t> &bytes)
{
    constexpr size_t width = 16;
    std::string text;
    std::string previous;
    bool skipping = false;
    for (size_t i = 0; i < bytes.size(); i += width) {
        const std::span line(bytes.data() + i, std::min(width, bytes.size() - i));
        const std::string shown = fmt::format("{:02x}", fmt::join(line, " "));
        if (shown != previous)
            text += fmt::format("{:04x}  {}\n", i, shown);
        else if (!skipping)
            text += "*\n";
        skipping = shown == previous;
        previous = shown;
    }
    return text;
}

} // namespace station
