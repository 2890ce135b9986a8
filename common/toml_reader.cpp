/* SPDX-License-Identifier: MIT */
#include "toml_reader.h"

#include <algorithm>
#include <sstream>

#include <fmt/format.h>

#include "words.h"

namespace common
{

std::string literal(const toml::node &node)
{
    if (const auto *text = node.as_string())
        return fmt::format("\"{}\"", text->get());
    if (const auto *number = node.as_integer())
        return fmt::format("{}", number->get());
    if (const auto *flag = node.as_boolean())
        return flag->get() ? "true" : "false";
    if (node.is_array() || node.is_table())
        return node.is_array() ? "an array" : "a table";
    std::ostringstream other;
    other << toml::node_view(node);
    return other.str();
}

toml::table parse_toml(std::string_view text, const std::string &path)
{
    try {
        return toml::parse(text, path);
    } catch (const toml::parse_error &error) {
        const auto at = error.source().begin;
        throw file_error(fmt::format("{}:{}:{}: {}", path, at.line, at.column, error.description()));
    }
}

toml::table read_toml(const std::string &path, std::string_view expected)
{
    return parse_toml(read_bytes(path, expected), path);
}

toml_reader::toml_reader(const std::string &file, const toml::table &table, const std::vector<std::string_view> &keys)
    : file_(file), table_(table)
{
    for (const auto &[key, value] : table_) {
        if (std::find(keys.begin(), keys.end(), key.str()) == keys.end())
            fail_at(value, fmt::format("unknown key {}{}", key.str(), expected_one_of(key.str(), keys)));
    }
}

void toml_reader::fail_at(const toml::node &node, const std::string &message) const
{
    const auto begin = node.source().begin;
    throw file_error(fmt::format("{}:{}:{}: {}", file_, begin.line, begin.column, message));
}

void toml_reader::fail(std::string_view key, const std::string &message) const
{
    const auto *node = table_.get(key);
    fail_at(node != nullptr ? *node : table_, message);
}

bool toml_reader::has(std::string_view key) const
{
    return table_.contains(key);
}

bool toml_reader::is_text(std::string_view key) const
{
    const auto *node = table_.get(key);
    return node != nullptr && node->is_string();
}

std::optional<int64_t> toml_reader::number(std::string_view key, number_range range) const
{
    const auto *node = table_.get(key);
    if (node == nullptr)
        return std::nullopt;
    const auto *value = node->as_integer();
    if (value == nullptr || value->get() < range.lowest || value->get() > range.highest)
        fail_at(*node, fmt::format("{} is {}, expected a whole number from {} to {}", key, literal(*node), range.lowest,
                                   range.highest));
    return value->get();
}

uint32_t toml_reader::word(std::string_view key, number_range range, uint32_t fallback) const
{
    return static_cast<uint32_t>(number(key, range).value_or(fallback));
}

bool toml_reader::flag(std::string_view key, bool fallback) const
{
    const auto *node = table_.get(key);
    if (node == nullptr)
        return fallback;
    if (!node->is_boolean())
        fail_at(*node, fmt::format("{} is {}, expected true or false", key, literal(*node)));
    return node->as_boolean()->get();
}

std::optional<std::string> toml_reader::text(std::string_view key) const
{
    const auto *node = table_.get(key);
    if (node == nullptr)
        return std::nullopt;
    if (!node->is_string())
        fail_at(*node, fmt::format("{} is {}, expected a string", key, literal(*node)));
    return node->as_string()->get();
}

std::string toml_reader::name_from(const toml::node &node, std::string_view key,
                                   const std::vector<std::string_view> &names) const
{
    const auto *text = node.as_string();
    if (text == nullptr)
        fail_at(node, fmt::format("{} is {}, expected one of {}", key, literal(node), joined(names)));
    if (std::find(names.begin(), names.end(), text->get()) == names.end())
        fail_at(node, fmt::format("{} is {}{}", key, literal(node), expected_one_of(text->get(), names)));
    return text->get();
}

std::optional<std::string> toml_reader::one_of(std::string_view key, const std::vector<std::string_view> &names) const
{
    const auto *node = table_.get(key);
    return node != nullptr ? std::optional(name_from(*node, key, names)) : std::nullopt;
}

const toml::array *toml_reader::array(std::string_view key, std::string_view expected) const
{
    const auto *node = table_.get(key);
    if (node != nullptr && !node->is_array())
        fail_at(*node, fmt::format("{} is {}, expected {}", key, literal(*node), expected));
    return node != nullptr ? node->as_array() : nullptr;
}

std::vector<std::string> toml_reader::some_of(std::string_view key, const std::vector<std::string_view> &names) const
{
    std::vector<std::string> values;
    if (const auto *entries = array(key, fmt::format("a list of {}", joined(names)))) {
        for (const auto &entry : *entries)
            values.push_back(name_from(entry, key, names));
    }
    return values;
}

uint32_t toml_reader::port_from(const toml::node &node, uint32_t highest) const
{
    const auto *number = node.as_integer();
    if (number == nullptr || number->get() < 1 || number->get() > highest)
        fail_at(node, fmt::format("found {}, expected a port between 1 and {}", literal(node), highest));
    return static_cast<uint32_t>(number->get());
}

std::vector<uint32_t> toml_reader::ports(std::string_view key, uint32_t highest) const
{
    const auto *node = table_.get(key);
    if (node == nullptr)
        return {};
    if (node->is_integer())
        return {port_from(*node, highest)};
    const auto list = node->is_string() ? parse_list(node->as_string()->get(), 1, highest) : std::nullopt;
    if (!list)
        fail_at(*node, fmt::format("{} is {}, expected ports between 1 and {} such as 7 or \"1-4,7\"", key,
                                   literal(*node), highest));
    return *list;
}

std::vector<uint32_t> toml_reader::distinct_ports(std::string_view key, uint32_t highest) const
{
    std::vector<uint32_t> numbers = ports(key, highest);
    std::ranges::sort(numbers);
    if (const auto twice = std::ranges::adjacent_find(numbers); twice != numbers.end())
        fail(key, fmt::format("{} names port {} twice, expected each port once", key, *twice));
    return numbers;
}

void toml_reader::for_table(std::string_view key, const std::function<void(const toml::table &)> &use) const
{
    const auto *node = table_.get(key);
    if (node == nullptr)
        return;
    if (!node->is_table())
        fail_at(*node, fmt::format("{} is {}, expected a [{}] table", key, literal(*node), key));
    use(*node->as_table());
}

void toml_reader::for_each_table(std::string_view key, const std::function<void(const toml::table &)> &use) const
{
    const auto expected = fmt::format("[[{}]] tables", key);
    if (const auto *entries = array(key, expected)) {
        for (const auto &entry : *entries) {
            if (!entry.is_table())
                fail_at(entry, fmt::format("{} holds {}, expected {}", key, literal(entry), expected));
            use(*entry.as_table());
        }
    }
}

void toml_reader::for_each_pair(std::string_view key, uint32_t highest,
                                const std::function<void(uint32_t, uint32_t)> &use) const
{
    constexpr std::string_view PAIRS = "pairs of ports such as [[1, 2], [3, 4]]";
    if (const auto *entries = array(key, PAIRS)) {
        for (const auto &entry : *entries) {
            const auto *pair = entry.as_array();
            if (pair == nullptr || pair->size() != 2)
                fail_at(entry, fmt::format("{} holds {}, expected {}", key, literal(entry), PAIRS));
            use(port_from((*pair)[0], highest), port_from((*pair)[1], highest));
        }
    }
}

} // namespace common
