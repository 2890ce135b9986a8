/* SPDX-License-Identifier: MIT */
#include "judgement.h"

#include <algorithm>
#include <fmt/format.h>

#include "limits.h"

namespace plan
{

using common::check;
using common::place;
using common::value;
using common::verdict;
using station::outcome;
using station::port_outcome;

place front_port(uint32_t port)
{
    return {.id = fmt::format("port{:02}", port), .name = fmt::format("port {}", port), .port = static_cast<int>(port)};
}

static bool names_ports(const outcome &unit)
{
    return unit.row_name == std::string_view("port");
}

place place_of(const test_plan &plan, const outcome &unit, const port_outcome &row)
{
    if (names_ports(unit) && has_port(plan, row.port))
        return front_port(row.port);
    return {.name = fmt::format("{} {}", unit.row_name, row.port)};
}

static std::string check_name(const value_limit &bounds)
{
    return bounds.value + "_limit";
}

static bool limits_anything(const value_limit &bounds)
{
    return !bounds.least.is_empty() || !bounds.most.is_empty() || !bounds.equal.is_empty();
}

static bool within(const value_limit &bounds, const value &measured)
{
    return (bounds.least.is_empty() || measured >= bounds.least) &&
           (bounds.most.is_empty() || measured <= bounds.most) && (bounds.equal.is_empty() || measured == bounds.equal);
}

/* "at least 50 and at most 57" */
static std::string expectation(const value_limit &bounds)
{
    std::string text;
    for (const auto &[words, bound] :
         {std::pair{"at least ", &bounds.least}, {"at most ", &bounds.most}, {"", &bounds.equal}})
        if (!bound->is_empty())
            text += fmt::format("{}{}{}", text.empty() ? "" : " and ", words, bound->json_text());
    return text;
}

/* Holds a value against a limit. No value fails, unless what should have it failed already. */
static check check_limit(const value_limit &bounds, const value &measured, verdict so_far, place where)
{
    check result{check_name(bounds), verdict::pass, "", std::move(where)};
    const bool judged_before = so_far != verdict::pass && so_far != verdict::unjudged;
    if (measured.is_empty() && judged_before) {
        result.verdict = verdict::not_tested;
    } else if (measured.is_empty() || !within(bounds, measured)) {
        const std::string unit = bounds.unit.empty() ? "" : " " + bounds.unit;
        result.verdict = verdict::fail;
        result.sentence = fmt::format("{} {}; expected {}.", bounds.value,
                                      measured.is_empty() ? "has no value" : "is " + measured.json_text() + unit,
                                      expectation(bounds));
    }
    return result;
}

/* One fact is one failure: what a check of the request has failed already, the plan need not fail again. */
static bool has_failed_by(const port_outcome &row, std::string_view column)
{
    return std::ranges::any_of(row.checks, [&](const check &own) {
        return own.verdict == verdict::fail && column == (own.column.empty() ? own.name : own.column);
    });
}

static void check_limit(const test_plan &plan, const value_limit &bounds, const outcome &unit,
                        std::vector<check> &checks)
{
    const auto column = std::ranges::find(unit.columns, bounds.value, &station::column::member);
    if (column == unit.columns.end() || unit.ports.empty()) {
        const auto values = unit_values(unit);
        const auto entry = std::ranges::find(values, bounds.value, &std::pair<std::string, value>::first);
        checks.push_back(
            check_limit(bounds, entry == values.end() ? value() : entry->second, unit.verdict, common::whole_unit()));
        return;
    }
    const auto index = static_cast<size_t>(column - unit.columns.begin());
    for (const port_outcome &row : unit.ports) {
        const place where = place_of(plan, unit, row);
        checks.push_back(has_failed_by(row, bounds.value)
                             ? check{check_name(bounds), verdict::not_tested, "", where}
                             : check_limit(bounds, row.cells[index].value, row.verdict, where));
    }
}

/* Whether there is a limit on a value of every port: it judges what nothing else does. */
static bool limits_ports(const step &task, const outcome &unit)
{
    return std::ranges::any_of(task.limits, [&](const value_limit &bounds) {
        return std::ranges::find(unit.columns, bounds.value, &station::column::member) != unit.columns.end();
    });
}

static void check_coverage(const step &task, const outcome &unit, std::vector<check> &checks)
{
    const auto fail = [&](place where, const char *sentence) {
        checks.push_back({"coverage", verdict::fail, sentence, std::move(where)});
    };
    /* What a failure left without a verdict, and says so, is not a failure of its own. */
    const auto is_left_by_a_failure = [&](const port_outcome &row) {
        return unit.verdict == verdict::fail && !row.reason.empty();
    };
    const size_t before = checks.size();
    if (!names_ports(unit))
        return fail(common::whole_unit(), "The reply lists ports by position; expected as many as the plan names.");
    for (const uint32_t port : task.covers) {
        const auto row = std::ranges::find(unit.ports, port, &port_outcome::port);
        if (row == unit.ports.end())
            fail(front_port(port), "The reply does not name this port; expected a verdict on it.");
        else if (row->verdict == verdict::unjudged && !limits_ports(task, unit) && !is_left_by_a_failure(*row))
            fail(front_port(port), "Nothing judges this port; expected a verdict on it.");
    }
    for (const port_outcome &row : unit.ports)
        if (std::ranges::find(task.covers, row.port) == task.covers.end())
            fail(front_port(row.port), "The reply names this port; expected only those that the plan covers.");
    if (checks.size() == before)
        checks.push_back({"coverage", verdict::pass, "", common::whole_unit()});
}

/* A port of the reply that the unit does not have; 0 for none. */
static uint32_t find_stranger(const test_plan &plan, const outcome &unit)
{
    const auto stranger =
        std::ranges::find_if_not(unit.ports, [&](const port_outcome &row) { return has_port(plan, row.port); });
    return !names_ports(unit) || stranger == unit.ports.end() ? 0 : stranger->port;
}

/* The plan's checks; the request's own judgement gives way to them when it fails anyway. */
static void add_verdict(judgement &result, const std::vector<check> &own, verdict of_request)
{
    const auto failed = std::ranges::count(own, verdict::fail, &check::verdict);
    result.verdict = failed > 0 ? verdict::fail : of_request;
    if (failed > 0)
        result.summary += fmt::format("; {} of the plan's checks failed", failed);
    else if (of_request == verdict::unjudged && !own.empty()) {
        result.verdict = verdict::pass;
        result.summary += "; the plan's checks passed";
    }
    result.checks.insert(result.checks.end(), own.begin(), own.end());
}

judgement judge(const test_plan &plan, const step &task, const outcome &unit)
{
    if (unit.verdict == verdict::no_verdict)
        return {verdict::no_verdict, unit.summary};
    if (const uint32_t stranger = find_stranger(plan, unit))
        return {verdict::no_verdict,
                fmt::format("the reply names port {}; expected ports of the plan's panel", stranger)};
    judgement result{unit.verdict, unit.summary};
    for (const port_outcome &row : unit.ports)
        for (const check &own : row.checks)
            result.checks.emplace_back(own).where = place_of(plan, unit, row);
    for (const check &own : unit.checks)
        result.checks.emplace_back(own).where = common::whole_unit();
    std::vector<check> of_plan;
    for (const value_limit &bounds : task.limits)
        if (const value_limit rest = left_to_the_plan(task, bounds); limits_anything(rest))
            check_limit(plan, rest, unit, of_plan);
    const bool failed_as_a_whole = unit.verdict == verdict::fail && unit.ports.empty();
    if (!task.covers.empty() && !failed_as_a_whole)
        check_coverage(task, unit, of_plan);
    add_verdict(result, of_plan, unit.verdict);
    return result;
}

} // namespace plan
