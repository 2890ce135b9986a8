/* SPDX-License-Identifier: MIT */
#include "record.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/program.h"
#include "facmsg.h"
#include "limits.h"
#include "station/requests/carry_out.h"
#include "station/requests/interruption.h"

namespace plan
{

using common::check;
using common::verdict;
using nlohmann::ordered_json;

/* Whether a reply of any kind judges ports: of a step that has none, a reader knows by it what is missing. */
static bool judges_ports(const step &task)
{
    if (task.is != step_kind::request || task.row->transfer)
        return false;
    const station::outcome sample = station::rehearse(*task.row, task.sent);
    return !sample.columns.empty() && (sample.verdict != verdict::unjudged || !task.limits.empty());
}

std::string begin_attempt(journal::writer &journal, const step &task, int64_t attempt)
{
    ordered_json options = ordered_json::object();
    for (const auto &[name, value] : task.options)
        options[name] = value;
    ordered_json content{{"request", request_name(task)},
                         {"options", options},
                         {"attempt", attempt},
                         {"attempts", task.attempts},
                         {"expected_s", expected_s(task)},
                         {"judges_ports", judges_ports(task)}};
    if (task.timeout_s > 0)
        content["timeout_s"] = task.timeout_s;
    if (!task.covers.empty())
        content["covers"] = task.covers;
    return journal.step_start(task.name, content);
}

static std::vector<common::limit> limits_on(const step &task, std::string_view value)
{
    std::vector<common::limit> limits;
    const auto add = [&](const char *name, const char *type, const common::value &bound) {
        if (!bound.is_empty())
            limits.push_back({type, bound, name});
    };
    for (const value_limit &bounds : task.limits)
        if (bounds.value == value) {
            add("min", "GREATER_THAN_OR_EQUAL", bounds.least);
            add("max", "LESS_THAN_OR_EQUAL", bounds.most);
            add("equal", "EQUAL", bounds.equal);
        }
    return limits;
}

/* Of values whose unit is the same on every switch; others have a host's own, which the plan may know. */
struct known_unit {
    std::string_view value, unit;
};
static constexpr known_unit KNOWN_UNITS[] = {
    {"received", "frames"}, {"transmitted", "frames"}, {"cpu_sent", "frames"}, {"fcs_errors", "errors"}};

static std::string unit_of_value(const step &task, std::string_view value)
{
    const auto bounds = std::ranges::find(task.limits, value, &value_limit::value);
    if (bounds != task.limits.end() && !bounds->unit.empty())
        return bounds->unit;
    const auto *row = std::ranges::find(KNOWN_UNITS, value, &known_unit::value);
    return row != std::end(KNOWN_UNITS) ? std::string(row->unit) : value == "value" ? task.unit : "";
}

static check measurement(const step &task, const std::string &name, const common::value &value, common::place where)
{
    return {.name = name,
            .where = std::move(where),
            .value = value,
            .unit = unit_of_value(task, name),
            .limits = limits_on(task, name)};
}

static void write_values(journal::writer &journal, const std::string &id, const test_plan &plan, const step &task,
                         const station::outcome &unit)
{
    for (const auto &[name, value] : unit_values(unit))
        journal.measurement(id, measurement(task, name, value, common::whole_unit()));
    for (const station::port_outcome &row : unit.ports)
        for (size_t i = 0; i < unit.columns.size(); i++)
            journal.measurement(
                id, measurement(task, unit.columns[i].member, row.cells[i].value, place_of(plan, unit, row)));
}

static void write_check(journal::writer &journal, const std::string &id, check one, bool tried_again)
{
    if (tried_again && one.verdict == verdict::fail)
        one.verdict = verdict::retried;
    journal.diagnosis(id, one);
}

void end_attempt(journal::writer &journal, const std::string &id, const test_plan &plan, const step &task,
                 const station::outcome &unit, const judgement &result, bool tried_again)
{
    write_values(journal, id, plan, task, unit);
    if (result.verdict == verdict::no_verdict) {
        journal.error(id, "no-verdict", result.summary);
        journal.step_end(id, journal::step_status::error);
        return;
    }
    for (const check &one : result.checks)
        write_check(journal, id, one, tried_again);
    write_check(journal, id, {"step", result.verdict, result.summary, common::whole_unit()}, tried_again);
    journal.step_end(id, journal::step_status::complete);
}

void record_left_out(journal::writer &journal, const test_plan &plan, steps_view steps)
{
    for (const step &task : plan.steps)
        if (std::ranges::find(steps, &task) == steps.end()) {
            const std::string id = begin_attempt(journal, task, 1);
            journal.log(id, "the run was told to leave the step out");
            journal.step_end(id, journal::step_status::skip);
        }
}

void record_end(journal::writer &journal, journal::run_status status, bool interrupted)
{
    if (interrupted)
        journal.run_error("interrupted",
                          fmt::format("The run was interrupted by SIG{}.", sigabbrev_np(station::noted_signal())));
    journal.run_end(status);
}

} // namespace plan
