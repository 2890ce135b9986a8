/* SPDX-License-Identifier: MIT
 *
 * What the journal holds of a run of a plan.
 */
#include "record.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <random>

#include "common/version.h"
#include "facmsg.h"
#include "station/requests/carry_out.h"
#include "values.h"

namespace plan
{

using common::check;
using common::verdict;
using nlohmann::ordered_json;

static std::string new_run_id()
{
    std::random_device words;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", words(), words(), words(), words());
}

static ordered_json unit_of(const test_plan &plan, const std::string &serial)
{
    ordered_json hardware = {{{"hardwareInfoId", "unit"}, {"name", "unit"}, {"serialNumber", serial}}};
    for (const port_group &group : plan.panel)
        for (const uint32_t port : group.ports)
            hardware.push_back({{"hardwareInfoId", front_port(port).id},
                                {"name", fmt::format("port {}", port)},
                                {"location", std::to_string(port)},
                                {"partType", group.name}});
    return {{"dutInfoId", "unit"},
            {"name", plan.product},
            {"platformInfos", ordered_json::array({{{"info", plan.product}}})},
            {"hardwareInfos", hardware}};
}

/* Of the library that is really loaded: its file is named by it, as libfacmsg.so.0.1.0. */
static std::string library_version()
{
    constexpr std::string_view name = "libfacmsg.so.";
    Dl_info loaded{};
    std::error_code gone;
    if (dladdr(reinterpret_cast<const void *>(&facmsg_client_send), &loaded) != 0 && loaded.dli_fname != nullptr)
        if (const std::string file = std::filesystem::canonical(loaded.dli_fname, gone).filename();
            file.starts_with(name))
            return file.substr(name.size());
    return common::version();
}

ordered_json run_head(const test_plan &plan, const identity &of, const std::string &command_line,
                      const ordered_json &parameters)
{
    ordered_json metadata = ordered_json::object();
    if (!of.operator_name.empty())
        metadata["operator"] = of.operator_name;
    metadata["station"] = of.station;
    metadata["run_id"] = new_run_id();
    metadata["station_version"] = common::version();
    metadata["library_version"] = library_version();
    return {{"name", plan.name},
            {"version", plan.version},
            {"commandLine", command_line},
            {"parameters", parameters},
            {"dutInfo", unit_of(plan, of.serial)},
            {"metadata", metadata}};
}

/* Whether a reply of any kind judges ports: of a step that has none, a reader knows by it what is missing. */
static bool judges_ports(const step &asked)
{
    if (asked.is != step_kind::request || asked.row->transfer)
        return false;
    const station::outcome seen = station::rehearse(*asked.row, asked.sent);
    return !seen.columns.empty() && (seen.verdict != verdict::unjudged || !asked.limits.empty());
}

std::string begin_attempt(journal::writer &journal, const step &asked, int64_t attempt)
{
    ordered_json options = ordered_json::object();
    for (const auto &[name, value] : asked.options)
        options[name] = value;
    ordered_json content{{"request", request_name(asked)},
                         {"options", options},
                         {"attempt", attempt},
                         {"attempts", asked.attempts},
                         {"expected_s", expected_s(asked)},
                         {"judges_ports", judges_ports(asked)}};
    if (asked.timeout_s > 0)
        content["timeout_s"] = asked.timeout_s;
    if (!asked.covers.empty())
        content["covers"] = asked.covers;
    return journal.step_start(asked.name, content);
}

static std::vector<common::limit> limits_on(const step &asked, std::string_view value)
{
    std::vector<common::limit> limits;
    const auto add = [&](const char *name, const char *type, const common::value &bound) {
        if (!bound.is_empty())
            limits.push_back({type, bound, name});
    };
    for (const value_limit &limited : asked.limits)
        if (limited.value == value) {
            add("min", "GREATER_THAN_OR_EQUAL", limited.least);
            add("max", "LESS_THAN_OR_EQUAL", limited.most);
            add("equal", "EQUAL", limited.equal);
        }
    return limits;
}

/* Of values whose unit is the same on every switch; others have a host's own, which the plan may know. */
struct known_unit {
    std::string_view value, unit;
};
constexpr known_unit known_units[] = {
    {"received", "frames"}, {"transmitted", "frames"}, {"cpu_sent", "frames"}, {"fcs_errors", "errors"}};

static std::string unit_of_value(const step &asked, std::string_view value)
{
    const auto limited = std::ranges::find(asked.limits, value, &value_limit::value);
    if (limited != asked.limits.end() && !limited->unit.empty())
        return limited->unit;
    const auto *known = std::ranges::find(known_units, value, &known_unit::value);
    return known != std::end(known_units) ? std::string(known->unit) : value == "value" ? asked.unit : "";
}

static check measurement(const step &asked, const std::string &name, const common::value &value, common::place where)
{
    return {.name = name,
            .where = std::move(where),
            .value = value,
            .unit = unit_of_value(asked, name),
            .limits = limits_on(asked, name)};
}

static void write_values(journal::writer &journal, const std::string &id, const test_plan &plan, const step &asked,
                         const station::outcome &unit)
{
    for (const auto &[name, value] : unit_values(unit))
        journal.measurement(id, measurement(asked, name, value, common::whole_unit()));
    for (const station::port_outcome &row : unit.ports)
        for (size_t i = 0; i < unit.columns.size(); i++)
            journal.measurement(
                id, measurement(asked, unit.columns[i].member, row.cells[i].value, place_of(plan, unit, row)));
}

static void write_check(journal::writer &journal, const std::string &id, check shown, bool tried_again)
{
    if (tried_again && shown.verdict == verdict::fail)
        shown.verdict = verdict::retried;
    journal.diagnosis(id, shown);
}

void end_attempt(journal::writer &journal, const std::string &id, const test_plan &plan, const step &asked,
                 const station::outcome &unit, const judgement &result, bool tried_again)
{
    write_values(journal, id, plan, asked, unit);
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

} // namespace plan
