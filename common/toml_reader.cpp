/* SPDX-License-Identifier: MIT
 *
 * Reads checked values out of a TOML table.
 */
#include "toml_reader.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include <fmt/format.h>

#include "nearest.h"
#include "path_fault.h"

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

std::string read_bytes(const std::string &path, std::string_view expected)
{
    if (const std::string fault = read_fault(path); !fault.empty())
        throw file_error(fmt::format("{}: {}, expected {}", path, fault, expected));
    if (!std::filesystem::is_regular_file(path))
        throw file_error(fmt::format("{}: is no regular file, expected {}", path, expected));
    errno = 0;
    std::ifstream file(path);
    std::ostringstream bytes;
    if (file.is_open() && (file.peek() == EOF ? !file.bad() : bool(bytes << file.rdbuf())))
        return bytes.str();
    throw file_error(
        fmt::format("{}: {}, expected {}", path, std::generic_category().message(errno == 0 ? EIO : errno), expected));
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
    std::vector<std::string> found;
    if (const auto *entries = array(key, fmt::format("a list of {}", joined(names)))) {
        for (const auto &entry : *entries)
            found.push_back(name_from(entry, key, names));
    }
    return found;
}

static bool is_port(int64_t number, uint32_t highest)
{
    return number >= 1 && number <= highest;
}

/* Takes a number off the front of text; 0 when there is none. */
static uint32_t take_number(std::string_view &text)
{
    uint32_t number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<size_t>(end.ptr - text.data()));
    return end.ec == std::errc() ? number : 0;
}

static bool take_char(std::string_view &text, char c)
{
    const bool there = !text.empty() && text.front() == c;
    if (there)
        text.remove_prefix(1);
    return there;
}

/* The ports of a string such as "1-4,7"; nothing when it is no such string. */
static std::optional<std::vector<uint32_t>> parse_ports(std::string_view text, uint32_t highest)
{
    std::vector<uint32_t> ports;
    do {
        const auto first = take_number(text);
        const auto last = take_char(text, '-') ? take_number(text) : first;
        if (!is_port(first, highest) || !is_port(last, highest) || last < first)
            return std::nullopt;
        for (auto number = first; number <= last; ++number)
            ports.push_back(number);
    } while (take_char(text, ','));
    return text.empty() ? std::optional(ports) : std::nullopt;
}

uint32_t toml_reader::port_from(const toml::node &node, uint32_t highest) const
{
    const auto *number = node.as_integer();
    if (!number || !is_port(number->get(), highest))
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
    const auto found = node->is_string() ? parse_ports(node->as_string()->get(), highest) : std::nullopt;
    if (!found)
        fail_at(*node, fmt::format("{} is {}, expected ports between 1 and {} such as 7 or \"1-4,7\"", key,
                                   shown(*node), highest));
    return *found;
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
    constexpr std::string_view EXPECTED = "pairs of ports such as [[1, 2], [3, 4]]";
    if (const auto *entries = array(key, EXPECTED)) {
        for (const auto &entry : *entries) {
            const auto *pair = entry.as_array();
            if (!pair || pair->size() != 2)
                fail_at(entry, fmt::format("{} holds {}, expected {}", key, shown(entry), EXPECTED));
            use(port_from((*pair)[0], highest), port_from((*pair)[1], highest));
        }
    }
}

} // namespace common
