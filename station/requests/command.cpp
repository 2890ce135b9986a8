/* SPDX-License-Identifier: MIT
 *
 * Options: what may be given, and how a value becomes a word of the payload.
 */
#include "command.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <functional>
#include <optional>

#include "common/words.h"

namespace station
{

/* A whole decimal number; a hexadecimal one with 0x in front or when hex is wanted. */
static std::optional<int64_t> parse_number(const std::string &text, bool hex)
{
    const bool prefixed = text.starts_with("0x") || text.starts_with("0X");
    const bool base_16 = hex || prefixed;
    const char *first = text.data() + (prefixed ? 2 : 0);
    const char *last = text.data() + text.size();
    int64_t number = 0;
    const auto [end, error] = std::from_chars(first, last, number, base_16 ? 16 : 10);
    if (error != std::errc{} || end != last || (base_16 && number < 0))
        return std::nullopt;
    return number;
}

std::string allowed_values(const option &field)
{
    std::string names;
    for (const choice &entry : field.choices)
        names += fmt::format("{}{}", names.empty() ? "" : ", ", entry.name);
    const auto text = [&](int64_t number) { return field.hex ? fmt::format("{:#x}", number) : std::to_string(number); };
    return fmt::format("{}{}{} to {}{}", names, names.empty() ? "" : " or ", text(field.least), text(field.most),
                       field.multiple > 1 ? fmt::format(", a multiple of {}", field.multiple) : "");
}

std::string name_of(std::span<const choice> choices, uint32_t code)
{
    for (const choice &entry : choices)
        if (entry.code == code)
            return entry.name;
    return fmt::format("code {}", code);
}

int64_t parse_value(const option &field, const std::string &value)
{
    for (const choice &entry : field.choices)
        if (value == entry.name)
            return entry.code;
    const std::optional<int64_t> number = parse_number(value, field.hex);
    if (!number || *number < field.least || *number > field.most || *number % field.multiple != 0)
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
    sent.option_names.insert(field.name);
}

void set_own(request &sent, const option &field, const std::string &value)
{
    sent.own[field.name] = value;
}

void set_own_number(request &sent, const option &field, const std::string &value)
{
    sent.own[field.name] = std::to_string(parse_value(field, value));
}

std::vector<uint32_t> parse_list(const option &field, const std::string &text)
{
    const auto numbers =
        common::parse_list(text, static_cast<uint32_t>(field.least), static_cast<uint32_t>(field.most));
    const bool ascending =
        numbers && std::ranges::adjacent_find(*numbers, std::ranges::greater_equal()) == numbers->end();
    return ascending ? *numbers : std::vector<uint32_t>();
}

void set_own_list(request &sent, const option &field, const std::string &value)
{
    if (parse_list(field, value).empty())
        throw usage_error(fmt::format("{}: found '{}', allowed: ascending numbers from {} to {}, as in 1-4,8",
                                      field.name, value, field.least, field.most));
    set_own(sent, field, value);
}

std::optional<std::string> own_value(const request &sent, const char *name)
{
    const auto entry = sent.own.find(name);
    return entry == sent.own.end() ? std::nullopt : std::optional(entry->second);
}

std::string member_name(std::string name)
{
    name.erase(0, name.find_first_not_of('-'));
    std::ranges::transform(name, name.begin(), [](char letter) {
        return letter == '-' ? '_' : letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return name;
}

static void check_limits(const command &row, const request &task, const option &least)
{
    for (const option &most : row.options) {
        const auto lower = own_value(task, least.name), upper = own_value(task, most.name);
        const bool pair =
            most.limited != nullptr && !most.least_value && std::string_view(most.limited) == least.limited;
        if (pair && lower && upper && std::stoll(*lower) > std::stoll(*upper))
            throw usage_error(
                fmt::format("{}: found '{}', allowed: at most the {} of {}", least.name, *lower, *upper, most.name));
    }
}

void check_together(const command &row, const request &task)
{
    for (const option &field : row.options) {
        if (field.not_beside != nullptr && task.option_names.contains(field.name) &&
            task.option_names.contains(field.not_beside))
            throw usage_error(
                fmt::format("{}: found beside {}, allowed: one of the two", field.name, field.not_beside));
        if (field.least_value)
            check_limits(row, task, field);
    }
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
    request fresh{row.type.value_or(0), std::vector<uint8_t>(row.payload_size)};
    for (const option &field : row.options)
        if (is_payload_word(field))
            put_word(fresh.payload, field.offset, field.initial);
    return fresh;
}

} // namespace station
