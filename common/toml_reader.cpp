/* SPDX-License-Identifier: MIT */
#include "toml_reader.h"

#include <algorithm>
#include <sstream>

#include <fmt/format.h>

#include "port_list.h"
#include "words.h"

namespace common
{

std::string shown(const toml::node &node)
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

toml_reader::toml_reader(const std::string &file, const toml::table &table, const std::vector<std::string_view> &known)
    : file_(file), table_(table)
{
    for (const auto &[key, value] : table_) {
        if (std::find(known.begin(), known.end(), key.str()) == known.end())
            fail_at(value, fmt::format("unknown key {}{}", key.str(), expected_one_of(key.str(), known)));
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
    fail_at(node ? *node : table_, message);
}

bool toml_reader::has(std::string_view key) const
{
    return table_.contains(key);
}

bool toml_reader::is_text(std::string_view key) const
{
    const auto *node = table_.get(key);
    return node && node->is_string();
}

std::optional<int64_t> toml_reader::number(std::string_view key, number_range range) const
{
    const auto *node = table_.get(key);
    if (!node)
        return std::nullopt;
    const auto *value = node->as_integer();
    if (!value || value->get() < range.lowest || value->get() > range.highest)
        fail_at(*node, fmt::format("{} is {}, expected a whole number from {} to {}", key, shown(*node), range.lowest,
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
    if (!node)
        return fallback;
    if (!node->is_boolean())
        fail_at(*node, fmt::format("{} is {}, expected true or false", key, shown(*node)));
    return node->as_boolean()->get();
}

std::optional<std::string> toml_reader::text(std::string_view key) const
{
    const auto *node = table_.get(key);
    if (!node)
        return std::nullopt;
    if (!node->is_string())
        fail_at(*node, fmt::format("{} is {}, expected a string", key, shown(*node)));
    return node->as_string()->get();
}

std::string toml_reader::name_from(const toml::node &node, std::string_view key,
                                   const std::vector<std::string_view> &names) const
{
    const auto *text = node.as_string();
    if (!text)
        fail_at(node, fmt::format("{} is {}, expected one of {}", key, shown(node), joined(names)));
    if (std::find(names.begin(), names.end(), text->get()) == names.end())
        fail_at(node, fmt::format("{} is {}{}", key, shown(node), expected_one_of(text->get(), names)));
    return text->get();
}

std::optional<std::string> toml_reader::one_of(std::string_view key, const std::vector<std::string_view> &names) const
{
    const auto *node = table_.get(key);
    return node ? std::optional(name_from(*node, key, names)) : std::nullopt;
}

const toml::array *toml_reader::array(std::string_view key, std::string_view expected) const
{
    const auto *node = table_.get(key);
    if (node && !node->is_array())
        fail_at(*node, fmt::format("{} is {}, expected {}", key, shown(*node), expected));
    return node ? node->as_array() : nullptr;
}

std::vector<std::string> toml_reader::some_of(std::string_view key, const std::vector<std::string_view> &names) const
{
    std::vector<std::string> chosen;
    if (const auto *entries = array(key, fmt::format("a list of {}", joined(names)))) {
        for (const auto &entry : *entries)
            chosen.push_back(name_from(entry, key, names));
    }
    return chosen;
}

uint32_t toml_reader::port_from(const toml::node &node, uint32_t highest) const
{
    const auto *number = node.as_integer();
    if (!number || number->get() < 1 || number->get() > highest)
        fail_at(node, fmt::format("found {}, expected a port between 1 and {}", shown(node), highest));
    return static_cast<uint32_t>(number->get());
}

std::vector<uint32_t> toml_reader::ports(std::string_view key, uint32_t highest) const
{
    const auto *node = table_.get(key);
    if (!node)
        return {};
    if (node->is_integer())
        return {port_from(*node, highest)};
    const auto list = node->is_string() ? parse_list(node->as_string()->get(), 1, highest) : std::nullopt;
    if (!list)
        fail_at(*node, fmt::format("{} is {}, expected ports between 1 and {} such as 7 or \"1-4,7\"", key,
                                   shown(*node), highest));
    return *list;
}

std::vector<uint32_t> toml_reader::distinct_ports(std::string_view key, uint32_t highest) const
{
    std::vector<uint32_t> sorted = ports(key, highest);
    std::ranges::sort(sorted);
    if (const auto twice = std::ranges::adjacent_find(sorted); twice != sorted.end())
        fail(key, fmt::format("{} names port {} twice, expected each port once", key, *twice));
    return sorted;
}

void toml_reader::for_table(std::string_view key, const std::function<void(const toml::table &)> &use) const
{
    const auto *node = table_.get(key);
    if (!node)
        return;
    if (!node->is_table())
        fail_at(*node, fmt::format("{} is {}, expected a [{}] table", key, shown(*node), key));
    use(*node->as_table());
}

void toml_reader::for_each_table(std::string_view key, const std::function<void(const toml::table &)> &use) const
{
    const auto expected = fmt::format("[[{}]] tables", key);
    if (const auto *entries = array(key, expected)) {
        for (const auto &entry : *entries) {
            if (!entry.is_table())
                fail_at(entry, fmt::format("{} holds {}, expected {}", key, shown(entry), expected));
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
            if (!pair || pair->size() != 2)
                fail_at(entry, fmt::format("{} holds {}, expected {}", key, shown(entry), PAIRS));
            use(port_from((*pair)[0], highest), port_from((*pair)[1], highest));
        }
    }
}

} // namespace common
