/* SPDX-License-Identifier: MIT
 *
 * Options: what may be given, and how a value becomes a word of the payload.
 */
#include "command.h"

#include <charconv>
#include <fmt/format.h>
#include <optional>

namespace station
{

/* A whole decimal number, or a hexadecimal one with 0x in front. */
static std::optional<int64_t> parse_number(const std::string &text)
{
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    const char *first = text.data() + (hex ? 2 : 0);
    const char *last = text.data() + text.size();
    int64_t number = 0;
    const auto [end, error] = std::from_chars(first, last, number, hex ? 16 : 10);
    if (error != std::errc{} || end != last || (hex && number < 0))
        return std::nullopt;
    return number;
}

std::string allowed_values(const option &field)
{
    std::string names;
    for (const choice &known : field.choices)
        names += fmt::format("{}{}", names.empty() ? "" : ", ", known.name);
    return fmt::format("{}{}{} to {}", names, names.empty() ? "" : " or ", field.least, field.most);
}

std::string name_of(std::span<const choice> choices, uint32_t code)
{
    for (const choice &known : choices)
        if (known.code == code)
            return known.name;
    return fmt::format("code {}", code);
}

int64_t parse_value(const option &field, const std::string &value)
{
    for (const choice &known : field.choices)
        if (value == known.name)
            return known.code;
    const std::optional<int64_t> number = parse_number(value);
    if (!number || *number < field.least || *number > field.most)
        throw usage_error(fmt::format("{}: found '{}', allowed: {}", field.name, value, allowed_values(field)));
    return *number;
}

static void put_word(std::vector<uint8_t> &payload, size_t offset, int64_t value)
{
    const auto word = static_cast<uint32_t>(value);
    std::memcpy(payload.data() + offset, &word, sizeof(word));
}

void set_word(request &sent, const option &field, const std::string &value)
{
    put_word(sent.payload, field.offset, field.values == arity::flag ? 1 : parse_value(field, value));
}

bool is_payload_word(const option &field)
{
    return field.set == set_word;
}

uint32_t word_at(const std::vector<uint8_t> &payload, size_t offset)
{
    uint32_t word;
    std::memcpy(&word, payload.data() + offset, sizeof(word));
    return word;
}

request empty_request(const command &row)
{
    request fresh{row.type, std::vector<uint8_t>(row.payload_size)};
    for (const option &field : row.options)
        if (is_payload_word(field))
            put_word(fresh.payload, field.offset, field.initial);
    return fresh;
}

} // namespace station
