/* SPDX-License-Identifier: MIT
 *
 * What a reply comes to by a step of a plan.
 */
#include "judgement.h"

#include <algorithm>
#include <fmt/format.h>

#include "step_limits.h"
#include "values.h"

namespace plan
{

using nlohmann::json;
using station::outcome;
using station::port_outcome;
using station::verdict;

journal::subject whole_unit()
{
    return {"unit"};
}

static constexpr std::string_view port_prefix = "port";

journal::subject front_port(uint32_t port)
{
    return {fmt::format("{}{:02}", port_prefix, port)};
}

std::string shown(const journal::subject &about)
{
    if (!about.subcomponent.empty() || !about.hardware_id.starts_with(port_prefix))
        return about.subcomponent.empty() ? about.hardware_id : about.subcomponent;
    return fmt::format("port {}", std::stoi(about.hardware_id.substr(port_prefix.size())));
}

static bool names_ports(const outcome &unit)
{
    return unit.row_name == std::string_view("port");
}

journal::subject subject_of(const test_plan &plan, const outcome &unit, const port_outcome &row)
{
    if (names_ports(unit) && has_port(plan, row.port))
        return front_port(row.port);
    return {"", fmt::format("{} {}", unit.row_name, row.port)};
}

std::string check_name(const limit &asked)
{
    return asked.value + "_limit";
}

static bool asks_anything(const limit &asked)
{
    return !asked.least.is_null() || !asked.most.is_null() || !asked.equal.is_null();
}

static bool within(const limit &asked, const json &value)
{
    return (asked.least.is_null() || value >= asked.least) && (asked.most.is_null() || value <= asked.most) &&
           (asked.equal.is_null() || value == asked.equal);
}

/* "at least 50 and at most 57" */
static std::string expectation(const limit &asked)
{
    std::string text;
    for (const auto &[words, bound] :
         {std::pair{"at least ", &asked.least}, {"at most ", &asked.most}, {"", &asked.equal}})
        if (!bound->is_null())
            text += fmt::format("{}{}{}", text.empty() ? "" : " and ", words, bound->dump());
    return text;
}

/* Holds a value against a limit. No value fails, unless what should have it failed already. */
static judged_check check_limit(const limit &asked, const json &value, verdict so_far, journal::subject about)
{
    judged_check made{check_name(asked), verdict::pass, "", std::move(about)};
    const bool judged_before = so_far != verdict::pass && so_far != verdict::unjudged;
    if (value.is_null() && judged_before) {
        made.judged = verdict::untested;
    } else if (value.is_null() || !within(asked, value)) {
        made.judged = verdict::fail;
        made.sentence = fmt::format(
            "{} {}{}{}; expected {}.", asked.value, value.is_null() ? "has no value" : "is " + value.dump(),
            asked.unit.empty() || value.is_null() ? "" : " ", value.is_null() ? "" : asked.unit, expectation(asked));
    }
    return made;
}

/* One fact is one failure: what a check of the request has failed already, the plan need not fail again. */
static bool has_failed_by(const port_outcome &row, std::string_view column)
{
    return std::ranges::any_of(row.checks, [&](const station::check &made) {
        return made.judged == verdict::fail && column == (made.column != nullptr ? made.column : made.name);
    });
}

static void check_limit(const test_plan &plan, const limit &asked, const outcome &unit,
                        std::vector<judged_check> &checks)
{
    const auto column = std::ranges::find(unit.columns, asked.value, &station::column::member);
    if (column == unit.columns.end() || unit.ports.empty()) {
        const auto values = unit_values(unit);
        const auto found = std::ranges::find(values, asked.value, [](const auto &entry) { return entry.first; });
        checks.push_back(
            check_limit(asked, found == values.end() ? json() : json(found->second), unit.judged, whole_unit()));
        return;
    }
    const auto index = static_cast<size_t>(column - unit.columns.begin());
    for (const port_outcome &row : unit.ports) {
        const journal::subject about = subject_of(plan, unit, row);
        checks.push_back(has_failed_by(row, asked.value)
                             ? judged_check{check_name(asked), verdict::untested, "", about}
                             : check_limit(asked, row.cells[index].value, row.judged, about));
    }
}

/* Whether there is a limit on a value of every port: it judges what nothing else does. */
static bool limits_ports(const step &asked, const outcome &unit)
{
    return std::ranges::any_of(asked.limits, [&](const limit &limited) {
        return std::ranges::find(unit.columns, limited.value, &station::column::member) != unit.columns.end();
    });
}

static void check_coverage(const step &asked, const outcome &unit, std::vector<judged_check> &checks)
{
    const auto fail = [&](journal::subject about, const char *sentence) {
        checks.push_back({"coverage", verdict::fail, sentence, std::move(about)});
    };
    /* What a failure left without a verdict, and says so, is not a failure of its own. */
    const auto is_left_by_a_failure = [&](const port_outcome &row) {
        return unit.judged == verdict::fail && !row.reason.empty();
    };
    const size_t before = checks.size();
    if (!names_ports(unit))
        return fail(whole_unit(), "The reply lists ports by position; expected as many as the plan names.");
    for (const uint32_t port : asked.covers) {
        const auto row = std::ranges::find(unit.ports, port, &port_outcome::port);
        if (row == unit.ports.end())
            fail(front_port(port), "The reply does not name this port; expected a verdict on it.");
        else if (row->judged == verdict::unjudged && !limits_ports(asked, unit) && !is_left_by_a_failure(*row))
            fail(front_port(port), "Nothing judges this port; expected a verdict on it.");
    }
    for (const port_outcome &row : unit.ports)
        if (std::ranges::find(asked.covers, row.port) == asked.covers.end())
            fail(front_port(row.port), "The reply names this port; expected only those that the plan covers.");
    if (checks.size() == before)
        checks.push_back({"coverage", verdict::pass, "", whole_unit()});
}

/* A port of the reply that the unit does not have; 0 for none. */
static uint32_t find_stranger(const test_plan &plan, const outcome &unit)
{
    const auto stranger =
        std::ranges::find_if_not(unit.ports, [&](const port_outcome &row) { return has_port(plan, row.port); });
    return !names_ports(unit) || stranger == unit.ports.end() ? 0 : stranger->port;
}

/* The plan's checks; the request's own judgement gives way to them when it fails anyway. */
static void add_verdict(judgement &result, const std::vector<judged_check> &added, verdict own)
{
    const auto failed = std::ranges::count(added, verdict::fail, &judged_check::judged);
    result.judged = failed > 0 ? verdict::fail : own;
    if (failed > 0)
        result.summary += fmt::format("; {} of the plan's checks failed", failed);
    else if (own == verdict::unjudged && !added.empty()) {
        result.judged = verdict::pass;
        result.summary += "; the plan's checks passed";
    }
    result.checks.insert(result.checks.end(), added.begin(), added.end());
}

judgement judge(const test_plan &plan, const step &asked, const outcome &unit)
{
    if (unit.judged == verdict::none)
        return {verdict::none, unit.summary};
    if (const uint32_t stranger = find_stranger(plan, unit))
        return {verdict::none, fmt::format("the reply names port {}; expected ports of the plan's panel", stranger)};
    judgement result{unit.judged, unit.summary};
    for (const port_outcome &row : unit.ports)
        for (const station::check &made : row.checks)
            result.checks.push_back({made.name, made.judged, made.sentence, subject_of(plan, unit, row)});
    for (const station::check &made : unit.checks)
        result.checks.push_back({made.name, made.judged, made.sentence, whole_unit()});
    std::vector<judged_check> added;
    for (const limit &limited : asked.limits)
        if (const limit left = left_to_the_plan(asked, limited); asks_anything(left))
            check_limit(plan, left, unit, added);
    const bool failed_as_a_whole = unit.judged == verdict::fail && unit.ports.empty();
    if (!asked.covers.empty() && !failed_as_a_whole)
        check_coverage(asked, unit, added);
    add_verdict(result, added, unit.judged);
    return result;
}

} // namespace plan
