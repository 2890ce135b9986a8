/* SPDX-License-Identifier: MIT
 *
 * The subcommands that are no single request: one row each.
 */
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>

#include "common/terminal.h"
#include "station/plan/run_plan.h"
#include "station/reports/history.h"
#include "station/reports/reports.h"

namespace station
{

static constexpr option GRACE_OPTION{
    .name = "--grace",
    .help = "seconds that a running request may take after an interruption, 10 if not given",
    .most = 3600};

static void add_flag(CLI::App &sub, const char *name, bool &chosen, const char *help)
{
    sub.add_flag(name, chosen, help)->disable_flag_override();
}

static void add_text(CLI::App &sub, const char *name, const char *kind, std::string &chosen, const char *help)
{
    sub.add_option(name, chosen, help)->type_name(kind);
}

static void add_seconds(CLI::App &sub, const option &field, int64_t &chosen)
{
    sub.add_option_function<std::string>(
           field.name, [&](const std::string &value) { chosen = parse_value(field, value); }, field.help)
        ->type_name("S");
}

/* Who tests what, and where that is kept. */
static void add_labels(CLI::App &sub, plan::order &job)
{
    add_text(sub, "--serial", "TEXT", job.of.serial, "serial number of the unit; asked for if not given");
    add_text(sub, "--operator", "TEXT", job.of.operator_name, "who runs the plan; asked for if not given");
    add_text(sub, "--station", "TEXT", job.of.station, "name of the test station; as the plan says, or the host's");
    add_text(sub, "--results", "DIR", job.results, "folder that gets a folder for each run");
    sub.get_option("--results")->capture_default_str();
}

static tool_run add_plan(CLI::App &sub)
{
    const auto job = std::make_shared<plan::order>();
    sub.add_option("FILE", job->file, "the plan")->required();
    add_labels(sub, *job);
    add_text(sub, "--only", "A,B", job->only, "run these steps only");
    add_text(sub, "--skip", "A,B", job->skip, "do not run these steps");
    for (const char *name : {"--results", "--only", "--skip"})
        sub.get_option(name)->check([](const std::string &value) { return value.empty() ? "found no text" : ""; });
    add_flag(sub, "--dry-run", job->dry_run, "check the plan and list its steps, send nothing");
    add_flag(sub, "--stop-on-fail", job->stop_on_fail, "skip all steps after one that fails");
    add_flag(sub, "--no-input", job->no_input, "ask for nothing");
    add_seconds(sub, GRACE_OPTION, job->grace_s);
    add_seconds(sub, BUSY_TIMEOUT_OPTION, job->busy_timeout_s);
    add_flag(sub, "--wait", job->wait, "wait for another station that is at this service");
    return [job](const settings &chosen) {
        job->json = chosen.json;
        job->directory = chosen.directory;
        job->no_progress = chosen.no_progress;
        job->command_line = chosen.command_line;
        return plan::run_plan(*job);
    };
}

static reports::form form_of(const settings &chosen)
{
    return chosen.json ? reports::form::json : common::colour_wanted() ? reports::form::coloured : reports::form::text;
}

static tool_run add_report(CLI::App &sub)
{
    const auto folder = std::make_shared<std::string>();
    sub.add_option("RUN_DIR", *folder, "folder of the run")->required();
    return [folder](const settings &chosen) { return reports::report_tool(*folder, form_of(chosen)); };
}

static tool_run add_check(CLI::App &sub)
{
    const auto file = std::make_shared<std::string>();
    sub.add_option("FILE", *file, "journal of a run")->required();
    return [file](const settings &chosen) { return reports::check_tool(*file, form_of(chosen)); };
}

static void add_day(CLI::App &sub, const char *name, std::string &chosen, const char *help)
{
    sub.add_option_function<std::string>(
           name,
           [name, &chosen](const std::string &value) {
               if (!reports::is_day(value))
                   throw usage_error(fmt::format("{}: found '{}', allowed: a day such as 2026-11-23", name, value));
               chosen = value;
           },
           help)
        ->type_name("YYYY-MM-DD");
}

static tool_run add_history(CLI::App &sub)
{
    struct question {
        std::string folder;
        reports::history_filter filter;
        bool runs = false;
    };
    const auto query = std::make_shared<question>();
    sub.add_option("DIR", query->folder, "folder of all runs")->required();
    add_text(sub, "--plan", "NAME", query->filter.plan, "runs of this plan only");
    add_text(sub, "--product", "NAME", query->filter.product, "runs on this product only");
    add_text(sub, "--station", "NAME", query->filter.station, "runs at this station only");
    add_text(sub, "--serial", "TEXT", query->filter.serial, "runs on the unit with this serial number only");
    add_day(sub, "--since", query->filter.since, "runs that began on this day or later, in UTC");
    add_day(sub, "--until", query->filter.until, "runs that began on this day or earlier, in UTC");
    add_flag(sub, "--runs", query->runs, "list the runs, too");
    return [query](const settings &chosen) {
        const auto &[since, until] = std::tie(query->filter.since, query->filter.until);
        if (!until.empty() && since > until)
            throw usage_error(
                fmt::format("--since: found '{}', expected a day up to that of --until, {}", since, until));
        return reports::history_tool(query->folder, query->filter, query->runs, form_of(chosen));
    };
}

std::span<const tool> tools()
{
    static const tool table[] = {
        {"plan", "run a test plan, record and report it", add_plan},
        {"report", "write the reports of a run anew, show its verdict", add_report},
        {"check", "check the journal of a run, line by line", add_check},
        {"history", "show what a folder of runs says", add_history},
    };
    return table;
}

} // namespace station
