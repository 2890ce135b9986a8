/* SPDX-License-Identifier: MIT */
#include "limits.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <optional>

#include "common/words.h"

namespace plan
{

using common::value;
using station::member;

static std::string joined(const std::vector<value> &list)
{
    std::string text;
    for (const value &entry : list)
        text += (text.empty() ? "" : ",") + entry.json_text();
    return text;
}

static void add_values(const std::string &prefix, const std::vector<member> &members,
                       std::vector<std::pair<std::string, value>> &values)
{
    for (const auto &[name, content] : members) {
        if (const auto *group = std::get_if<std::vector<member>>(&content))
            add_values(prefix + name + "_", *group, values);
        else if (const auto *list = std::get_if<std::vector<value>>(&content))
            values.emplace_back(prefix + name, joined(*list));
        else
            values.emplace_back(prefix + name, std::get<value>(content));
    }
}

std::vector<std::pair<std::string, value>> unit_values(const station::outcome &unit)
{
    std::vector<std::pair<std::string, value>> values;
    if (unit.result)
        values.emplace_back("result", *unit.result);
    add_values("", unit.members, values);
    return values;
}

/* Empty for what is neither a finite number nor a text. */
static value bound_from(const toml::node &node)
{
    if (const auto *number = node.as_integer())
        return number->get();
    if (const auto *number = node.as_floating_point(); number != nullptr && std::isfinite(number->get()))
        return number->get();
    return node.is_string() ? value(node.as_string()->get()) : value();
}

/* Bytes are shown in small letters. */
static std::string lower_case(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

static value_limit read_limit(const std::string &file, const std::string &name, const toml::table &table)
{
    const common::toml_reader reader(file, table, {"min", "max", "equal", "unit"});
    value_limit bounds{.value = name, .unit = reader.text("unit").value_or("")};
    for (const auto &[key, into] : {std::pair{"min", &bounds.least}, {"max", &bounds.most}, {"equal", &bounds.equal}})
        if (const toml::node *node = table.get(key)) {
            *into = bound_from(*node);
            const bool ordered = into != &bounds.equal;
            if (into->is_empty() || (ordered && !into->is_number()))
                reader.fail(key, fmt::format("{} is {}, expected a number{}", key, common::literal(*node),
                                             ordered ? "" : " or a text"));
        }
    if (!bounds.least.is_empty() && !bounds.most.is_empty() && bounds.least > bounds.most)
        reader.fail("max", "max is below min, expected no less");
    if (bounds.equal.is_text() && name.ends_with("_hex"))
        bounds.equal = lower_case(bounds.equal.text());
    if (bounds.least.is_empty() && bounds.most.is_empty() && bounds.equal.is_empty())
        reader.fail(name, fmt::format("{} has no limit, expected min, max or equal", name));
    return bounds;
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
                                             common::literal(node)));
        into.limits.push_back(read_limit(file, std::string(key.str()), *node.as_table()));
    }
}

/* The bound that an option of the station judges; null when it judges another value. */
template <class Limit> static auto *bound_of(Limit &bounds, const station::option &field)
{
    const bool same = field.limited != nullptr && bounds.value == field.limited;
    return !same ? nullptr : field.least_value ? &bounds.least : &bounds.most;
}

/* A bound as the value of an option, which counts in whole numbers; nothing when the option takes no such number. */
static std::optional<std::string> option_value(const station::option &field, const value &bound)
{
    if (!bound.is_number())
        return std::nullopt;
    const double exact = bound.number();
    const double whole = field.least_value ? std::ceil(exact) : std::floor(exact);
    if (whole < static_cast<double>(field.least) || whole > static_cast<double>(field.most))
        return std::nullopt;
    return std::to_string(static_cast<int64_t>(whole));
}

value_limit left_to_the_plan(const step &of, value_limit bounds)
{
    if (of.row == nullptr) /* a question: the plan judges the answer */
        return bounds;
    for (const station::option &field : of.row->options)
        if (value *bound = bound_of(bounds, field);
            bound != nullptr && !bound->is_empty() &&
            station::own_value(of.sent, field.name) == option_value(field, *bound))
            *bound = {};
    return bounds;
}

/* Lets every value pass, for the plan to judge. */
static void open_limit(const station::option &field, step &into)
{
    into.sent.own.insert_or_assign(field.name, std::to_string(std::numeric_limits<int64_t>::max()));
}

void adopt_limits(step &into)
{
    for (const station::option &field : into.row->options)
        for (const value_limit &bounds : into.limits) {
            const value *bound = bound_of(bounds, field);
            if (bound == nullptr || station::own_value(into.sent, field.name))
                continue;
            if (const auto number = option_value(field, *bound))
                field.set(into.sent, field, *number);
            else if (field.judges_unasked)
                open_limit(field, into);
        }
}

void check_limits(const common::toml_reader &reader, const toml::table &step_table, const step &task,
                  const station::outcome &sample)
{
    std::vector<std::pair<std::string, value>> values = unit_values(sample);
    for (const station::column &column : sample.columns)
        values.emplace_back(column.member, 0);
    std::vector<std::string_view> names(values.size());
    std::ranges::transform(values, names.begin(), [](const auto &entry) { return std::string_view(entry.first); });
    for (const value_limit &bounds : task.limits) {
        const toml::node &node = *step_table["limits"][bounds.value].node();
        const auto name = std::ranges::find(names, bounds.value);
        if (name == names.end())
            reader.fail_at(node, fmt::format("unknown value {} of {}{}", bounds.value, request_name(task),
                                             common::expected_one_of(bounds.value, names)));
        const bool is_text = values[static_cast<size_t>(name - names.begin())].second.is_text();
        const bool fits = is_text ? bounds.equal.is_text() && bounds.least.is_empty() && bounds.most.is_empty()
                                  : bounds.equal.is_empty() || bounds.equal.is_number();
        if (!fits)
            reader.fail_at(node, fmt::format("{} is a {}", bounds.value,
                                             is_text ? "text, expected equal = \"…\"" : "number, expected numbers"));
    }
}

} // namespace plan
