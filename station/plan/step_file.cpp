/* SPDX-License-Identifier: MIT
 *
 * One [[step]] of a plan file: a request, whose options go through the same rows as those of the command line, or a
 * group of steps.
 */
#include "step_file.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/words.h"
#include "facmsg_protocol.h"
#include "limits.h"
#include "station/requests/carry_out.h"

namespace plan
{

using station::arity;
using station::command;
using station::option;

static constexpr int64_t LONGEST_TIMEOUT_S = 86400;

/* Requests with a type and a verdict of their own: not raw, not list. */
static const command &read_request(const common::toml_reader &reader)
{
    std::vector<std::string_view> names;
    for (const command &row : station::commands())
        if (row.type)
            names.emplace_back(row.name);
    const auto value = reader.text("request");
    if (value == "raw" || value == "list")
        reader.fail("request", fmt::format("request is \"{}\", which judges nothing, expected one of {}", *value,
                                           common::joined(names)));
    const std::string name = *reader.one_of("request", names);
    return *std::ranges::find_if(station::commands(), [&](const command &row) { return row.name == name; });
}

std::string read_name(const common::toml_reader &reader, const std::string &usual, const std::string &prefix,
                      const test_plan &into)
{
    const std::string own = reader.text("name").value_or(usual);
    if (own.empty() && !reader.has("name"))
        reader.fail("name", "found no key name, expected a name for the step");
    if (own.empty() || own.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_-") != std::string::npos)
        reader.fail("name", fmt::format("name is \"{}\", expected letters a to z, digits, - and _", own));
    std::string name = prefix + own;
    if (std::ranges::any_of(into.steps, [&](const step &other) { return other.name == name || other.group == name; }))
        reader.fail("name", fmt::format("name is \"{}\", which an earlier step has, expected another name", own));
    return name;
}

void read_failure_rules(const common::toml_reader &reader, step &into)
{
    into.attempts = 1 + reader.number("retries", {0, 9}).value_or(0);
    into.stop_on_fail = reader.flag("stop_on_fail", false);
}

/* The value as the command line would have it; nothing when it is of a wrong type. */
static std::optional<std::string> option_text(const option &field, const toml::node &node)
{
    const bool is_flag = field.values == arity::flag;
    if (node.is_boolean() && is_flag)
        return "";
    if (node.is_string() && !is_flag)
        return node.as_string()->get();
    if (!node.is_integer() || is_flag || field.values == arity::any)
        return std::nullopt;
    return fmt::format(fmt::runtime(field.hex ? "{:#x}" : "{}"), node.as_integer()->get());
}

static void set_option(const common::toml_reader &reader, const option &field, const toml::node &node, step &into)
{
    const auto value = option_text(field, node);
    const std::string name = station::member_name(field.name);
    if (!value)
        reader.fail_at(node, fmt::format("{} is {}, expected {}", name, common::literal(node),
                                         field.values == arity::flag  ? "true or false"
                                         : field.values == arity::any ? "a text"
                                                                      : "a number or a text"));
    if (node.is_boolean() && !node.as_boolean()->get())
        return;
    if (field.name == std::string_view("--file") && *value == "-")
        reader.fail_at(node, "file is \"-\", expected a file: a plan reads nothing from the input");
    try {
        field.set(into.sent, field, *value);
    } catch (const station::usage_error &error) {
        reader.fail_at(node, error.what());
    }
    into.options.emplace_back(name, node.is_boolean() ? "true" : *value);
}

static void read_options(const std::string &file, const toml::table &table, step &into)
{
    std::vector<std::string> names;
    for (const option &field : into.row->options)
        names.push_back(station::member_name(field.name));
    const common::toml_reader reader(file, table, {names.begin(), names.end()});
    for (size_t i = 0; i < names.size(); i++)
        if (const toml::node *node = table.get(names[i]))
            set_option(reader, into.row->options[i], *node, into);
}

/* What is wrong only when all options are seen together. Returns an outcome with the values that a reply has. */
static station::outcome check_options(const common::toml_reader &reader, step &into)
{
    const auto has = [&](const std::string &name) {
        return std::ranges::find(into.options, name, &std::pair<std::string, std::string>::first) != into.options.end();
    };
    for (const option &field : into.row->options)
        if (*field.name != '-' && field.values == arity::one && !has(station::member_name(field.name)))
            reader.fail("options", fmt::format("{}: expected exactly one value, allowed: {}", field.name,
                                               station::allowed_values(field)));
    try {
        adopt_limits(into);
        return station::rehearse(*into.row, into.sent);
    } catch (const station::usage_error &error) {
        reader.fail("options", error.what());
    }
}

static void check_panel(const common::toml_reader &reader, const char *key, const test_plan &into,
                        const std::vector<uint32_t> &ports)
{
    for (const uint32_t port : ports)
        if (!has_port(into, port))
            reader.fail(key, fmt::format("{} names port {}, expected ports of the panel", key, port));
}

/* The names of a reply's ports that it lists by position, as the option gives them; nothing for other requests. */
static std::optional<std::vector<uint32_t>> named_positions(const step &task)
{
    const auto field = std::ranges::find(task.row->options, std::string_view("--ports"), &option::name);
    if (field == task.row->options.end())
        return std::nullopt;
    return station::parse_list(*field, station::own_value(task.sent, field->name).value_or(""));
}

static void read_covers(const common::toml_reader &reader, const test_plan &into, const station::outcome &sample,
                        step &task)
{
    task.covers = reader.distinct_ports("covers", FACMSG_MAX_PORTS);
    check_panel(reader, "covers", into, task.covers);
    const auto named = named_positions(task);
    check_panel(reader, "options", into, named.value_or(std::vector<uint32_t>{}));
    if (task.covers.empty())
        return;
    if (sample.columns.empty())
        reader.fail("covers", fmt::format("found covers, expected none: {} judges no ports", task.row->name));
    if (named && named->empty())
        reader.fail("covers", "found covers without options.ports, expected both: the reply lists ports by position");
    if (named && *named != task.covers)
        reader.fail("covers", "covers and options.ports differ, expected the same ports in both");
}

/* Half as long again as the request may take, and some seconds for the way; ten minutes when that is not known. */
static int64_t default_timeout_s(const station::duration &expected)
{
    const int longest_s = expected.longest_s > 0 ? expected.longest_s : expected.typical_s;
    return longest_s > 0 ? longest_s * 3 / 2 + 30 : 600;
}

static void read_request_step(const std::string &file, const toml::table &table, const std::string &prefix,
                              test_plan &into)
{
    const common::toml_reader reader(
        file, table, {"name", "request", "options", "limits", "covers", "retries", "stop_on_fail", "timeout_s"});
    const command &row = read_request(reader);
    std::string usual = row.name;
    std::ranges::replace(usual, ' ', '-');
    step task{.name = read_name(reader, usual, prefix, into), .row = &row, .sent = station::empty_request(row)};
    reader.for_table("options", [&](const toml::table &options) { read_options(file, options, task); });
    reader.for_table("limits", [&](const toml::table &limits) { read_limits(file, limits, task); });
    const station::outcome sample = check_options(reader, task);
    check_limits(reader, table, task, sample);
    read_covers(reader, into, sample, task);
    read_failure_rules(reader, task);
    task.timeout_s = reader.number("timeout_s", {1, LONGEST_TIMEOUT_S}).value_or(default_timeout_s(row.expected));
    into.steps.push_back(std::move(task));
}

static void read_group(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "repeat", "step"});
    if (!prefix.empty())
        reader.fail("repeat", "found a group in a group, expected a request, an instruction, a question or a pause");
    const std::string name = read_name(reader, "", "", into);
    const int64_t rounds = *reader.number("repeat", {1, 100});
    const size_t before = into.steps.size();
    for (int64_t round = 1; round <= rounds; round++)
        reader.for_each_table("step", [&](const toml::table &entry) {
            read_step(file, entry, fmt::format("{}.{}.", name, round), into);
            into.steps.back().group = name;
        });
    if (into.steps.size() == before)
        reader.fail("step", "the group has no steps, expected [[step.step]] tables");
}

/* A step has one of these keys, which says what it is. */
struct step_form {
    const char *key;
    void (*add)(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
};
static constexpr step_form FORMS[] = {{"request", read_request_step},
                                      {"instruct", read_instruction},
                                      {"ask", read_question},
                                      {"pause_s", read_pause},
                                      {"repeat", read_group}};

void read_step(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    std::vector<std::string_view> keys, present;
    for (const step_form &form : FORMS) {
        keys.emplace_back(form.key);
        if (table.contains(form.key))
            present.emplace_back(form.key);
    }
    if (present.size() == 1)
        return std::ranges::find(FORMS, present.front(), &step_form::key)->add(file, table, prefix, into);
    std::vector<std::string_view> allowed = keys;
    if (present.empty()) /* a key that nobody knows may be what was meant */
        allowed.insert(allowed.end(),
                       {"name", "options", "limits", "covers", "retries", "stop_on_fail", "timeout_s", "unit", "step"});
    else
        for (const auto &[key, node] : table)
            allowed.emplace_back(key.str());
    common::toml_reader(file, table, allowed)
        .fail(present.empty() ? "request" : present.back(),
              fmt::format("found {}, expected one key of {}", present.empty() ? "none" : common::joined(present),
                          common::joined(keys)));
}

} // namespace plan
