/* SPDX-License-Identifier: MIT
 *
 * The limits of a [[step]].
 */
#include "step_limits.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <optional>

#include "common/nearest.h"
#include "values.h"

namespace plan
{

/* Empty for what is neither a finite number nor a text. */
static common::value bound_from(const toml::node &node)
{
    if (const auto *number = node.as_integer())
        return number->get();
    if (const auto *number = node.as_floating_point(); number != nullptr && std::isfinite(number->get()))
        return number->get();
    return node.is_string() ? common::value(node.as_string()->get()) : common::value();
}

/* Bytes are shown in small letters. */
static std::string lower_case(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

static value_limit read_limit(const std::string &file, const std::string &value, const toml::table &table)
{
    const common::toml_reader reader(file, table, {"min", "max", "equal", "unit"});
    value_limit asked{.value = value, .unit = reader.text("unit").value_or("")};
    for (const auto &[key, into] : {std::pair{"min", &asked.least}, {"max", &asked.most}, {"equal", &asked.equal}})
        if (const toml::node *node = table.get(key)) {
            *into = bound_from(*node);
            const bool ordered = into != &asked.equal;
            if (into->is_empty() || (ordered && !into->is_number()))
                reader.fail(key, fmt::format("{} is {}, expected a number{}", key, common::shown(*node),
                                             ordered ? "" : " or a text"));
        }
    if (!asked.least.is_empty() && !asked.most.is_empty() && asked.least > asked.most)
        reader.fail("max", "max is below min, expected no less");
    if (asked.equal.is_text() && value.ends_with("_hex"))
        asked.equal = lower_case(asked.equal.text());
    if (asked.least.is_empty() && asked.most.is_empty() && asked.equal.is_empty())
        reader.fail(value, fmt::format("{} has no limit, expected min, max or equal", value));
    return asked;
}

void read_limits(const std::string &file, const toml::table &table, step &into)
{
    std::vector<std::string_view> any_key; /* which are right depends on the request */
    for (const auto &[key, node] : table)
        any_key.push_back(key.str());
    const common::toml_reader reader(file, table, any_key);
    for (const auto &[key, node] : table) {
        if (!node.is_table())
            reader.fail_at(node, fmt::format("{} is {}, expected limits such as {{ min = 1, max = 5 }}", key.str(),
                                             common::shown(node)));
        into.limits.push_back(read_limit(file, std::string(key.str()), *node.as_table()));
    }
}

/* The bound that an option of the station judges; null when it judges another value. */
template <class Limit> static auto *bound_of(Limit &asked, const station::option &field)
{
    const bool same = field.limited != nullptr && asked.value == field.limited;
    return !same ? nullptr : field.least_value ? &asked.least : &asked.most;
}

/* A bound as the value of an option, which counts in whole numbers; nothing when the option takes no such number. */
static std::optional<std::string> option_value(const station::option &field, const common::value &bound)
{
    if (!bound.is_number())
        return std::nullopt;
    const double exact = bound.number();
    const double whole = field.least_value ? std::ceil(exact) : std::floor(exact);
    if (whole < static_cast<double>(field.least) || whole > static_cast<double>(field.most))
        return std::nullopt;
    return std::to_string(static_cast<int64_t>(whole));
}

value_limit left_to_the_plan(const step &of, value_limit asked)
{
    if (of.row == nullptr) /* a question: the plan judges the answer */
        return asked;
    for (const station::option &field : of.row->options)
        if (common::value *bound = bound_of(asked, field);
            bound != nullptr && !bound->is_empty() &&
            station::own_value(of.sent, field.name) == option_value(field, *bound))
            *bound = {};
    return asked;
}

/* Lets every value pass, for the plan to judge. */
static void open_limit(const station::option &field, step &into)
{
    into.sent.own.insert_or_assign(field.name, std::to_string(std::numeric_limits<int64_t>::max()));
}

void adopt_limits(step &into)
{
    for (const station::option &field : into.row->options)
        for (const value_limit &asked : into.limits) {
            const common::value *bound = bound_of(asked, field);
            if (bound == nullptr || station::own_value(into.sent, field.name))
                continue;
            if (const auto adopted = option_value(field, *bound))
                field.set(into.sent, field, *adopted);
            else if (field.judges_unasked)
                open_limit(field, into);
        }
}

void check_limits(const common::toml_reader &reader, const toml::table &step_table, const step &read,
                  const station::outcome &seen)
{
    std::vector<std::pair<std::string, common::value>> values = unit_values(seen);
    for (const station::column &column : seen.columns)
        values.emplace_back(column.member, 0);
    std::vector<std::string_view> names(values.size());
    std::ranges::transform(values, names.begin(), [](const auto &entry) { return std::string_view(entry.first); });
    for (const value_limit &asked : read.limits) {
        const toml::node &node = *step_table["limits"][asked.value].node();
        const auto known = std::ranges::find(names, asked.value);
        if (known == names.end())
            reader.fail_at(node, fmt::format("unknown value {} of {}{}", asked.value, request_name(read),
                                             common::expected_one_of(asked.value, names)));
        const bool is_text = values[static_cast<size_t>(known - names.begin())].second.is_text();
        const bool fits = is_text ? asked.equal.is_text() && asked.least.is_empty() && asked.most.is_empty()
                                  : asked.equal.is_empty() || asked.equal.is_number();
        if (!fits)
            reader.fail_at(node, fmt::format("{} is a {}", asked.value,
                                             is_text ? "text, expected equal = \"…\"" : "number, expected numbers"));
    }
}

} // namespace plan
