/* SPDX-License-Identifier: MIT
 *
 * A plan from the command line to the verdict.
 */
#include "run_plan.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "common/error_json.h"
#include "common/nearest.h"
#include "common/say.h"
#include "identity.h"
#include "listing.h"
#include "prompt.h"
#include "record.h"
#include "runner.h"
#include "station/journal/run_record.h"
#include "station/reports/reports.h"
#include "station/requests/carry_out.h"
#include "station/requests/interruption.h"
#include "station/requests/service_lock.h"

namespace plan
{

using common::print;
using station::exit_code;
using steps_view = std::span<const step *const>;

/* The names of --only or --skip, all of them of the plan. */
static std::vector<std::string> step_names(const test_plan &plan, const char *option, const std::string &list)
{
    std::vector<std::string> names;
    std::istringstream items(list);
    for (std::string name; std::getline(items, name, ',');) {
        std::vector<std::string_view> known;
        for (const step &asked : plan.steps)
            if (asked.group.empty() || known.empty() || known.back() != asked.group)
                known.emplace_back(asked.group.empty() ? asked.name : asked.group);
        if (std::ranges::none_of(plan.steps, [&](const step &asked) { return journal::is_meant(name, asked.name); }))
            throw station::usage_error(
                fmt::format("{}: unknown step '{}'{}", option, name, common::expected_one_of(name, known)));
        names.push_back(name);
    }
    return names;
}

static std::vector<const step *> select(const test_plan &plan, const order &given)
{
    const std::vector<std::string> only = step_names(plan, "--only", given.only);
    const std::vector<std::string> skipped = step_names(plan, "--skip", given.skip);
    std::vector<const step *> selected;
    const auto among = [](const std::vector<std::string> &names, const step &asked) {
        return std::ranges::any_of(names, [&](const std::string &name) { return journal::is_meant(name, asked.name); });
    };
    for (const step &asked : plan.steps)
        if ((only.empty() || among(only, asked)) && !among(skipped, asked))
            selected.push_back(&asked);
    return selected;
}

/* What cannot be told by the journal of the run: why, on stderr and to programs. */
static exit_code fail(const order &given, exit_code code, const std::string &why, const char *word)
{
    common::say(fmt::format("facmsg-station: plan: {}", why));
    if (given.json)
        print(common::error_json(code, why, word));
    return code;
}

/* By only and skip a reader knows a run of a part of the plan; a choice of all its steps is none. */
static nlohmann::ordered_json parameters_of(const order &given, const test_plan &plan, size_t steps)
{
    const bool is_whole = steps == plan.steps.size();
    nlohmann::ordered_json parameters{
        {"plan", given.file}, {"plan_sha256", plan.sha256}, {"stop_on_fail", given.stop_on_fail}, {"steps", steps}};
    if (!given.only.empty() && !is_whole)
        parameters["only"] = given.only;
    if (!given.skip.empty() && !is_whole)
        parameters["skip"] = given.skip;
    return parameters;
}

/* The run's last lines. */
static void record_end(journal::writer &journal, const run_end &end)
{
    if (end.interrupted)
        journal.run_error("interrupted",
                          fmt::format("The run was interrupted by SIG{}.", sigabbrev_np(station::noted_signal())));
    journal.run_end(end.status);
}

/* A run of a part of the plan says so. */
static void record_left_out(journal::writer &journal, const test_plan &plan, steps_view steps)
{
    for (const step &known : plan.steps)
        if (std::ranges::find(steps, &known) == steps.end()) {
            const std::string id = begin_attempt(journal, known, 1);
            journal.log(id, "the run was told to leave the step out");
            journal.step_end(id, journal::step_status::skip);
        }
}

/* Everything from here on is in the journal before it is anywhere else. */
static exit_code run_recorded(const test_plan &plan, const identity &of, steps_view steps, const order &given,
                              const std::filesystem::path &results, console &shown)
{
    const auto run_dir = journal::create_run_folder(results, folder_name(of.serial));
    journal::writer journal(run_dir);
    journal.run_start(run_head(plan, of, given.command_line, parameters_of(given, plan, steps.size())));
    const run_settings settings{given.directory, given.stop_on_fail, std::chrono::seconds(given.grace_s),
                                std::chrono::seconds(given.busy_timeout_s)};
    const run_end end = runner(plan, steps, settings, journal, shown).run();
    record_left_out(journal, plan, steps);
    record_end(journal, end);
    const journal::run_record record = journal::read_run(run_dir);
    try {
        reports::write_reports(run_dir, record);
    } catch (const std::system_error &error) {
        common::say(fmt::format("facmsg-station: plan: {}", error.what()));
        print(given.json ? reports::run_json(record, run_dir, error.what()) : reports::unsaved_text(run_dir));
        return exit_code::not_saved;
    }
    print(given.json ? reports::run_json(record, run_dir)
                     : reports::verdict_text(record, run_dir, common::colour_wanted(), common::stdout_columns()));
    return reports::exit_code_of(record);
}

/* A closed stdout, or a limit on the size of files, must not end the program before the record does. */
static void ignore_deadly_signals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

/* Nobody is to find out half-way that a question needs an answer. */
static void check_operator(steps_view steps, const order &given)
{
    const auto waits = std::ranges::find_if(steps, [](const step *asked) { return is_by_hand(*asked); });
    if (waits != steps.end() && (given.no_input || !somebody_there()))
        throw station::usage_error(
            fmt::format("step {} waits for the operator, but {}; allowed: --skip {}", (*waits)->name,
                        given.no_input ? "--no-input was given" : "there is no terminal to ask at", (*waits)->name));
}

static void check_results(const std::filesystem::path &results)
{
    std::error_code unknown;
    const auto there = std::filesystem::status(results, unknown);
    if (unknown == std::errc::permission_denied)
        throw station::usage_error(fmt::format(
            "--results: '{}' cannot be entered: permission denied, allowed: a directory, or where one can be made",
            results.string()));
    if (std::filesystem::exists(there) && !std::filesystem::is_directory(there))
        throw station::usage_error(fmt::format(
            "--results: '{}' is no directory, allowed: a directory, or where one can be made", results.string()));
}

/* What other stations are told. */
static station::claim claim_for(const test_plan &plan, const identity &of, const order &given)
{
    return {.directory = given.directory,
            .purpose = fmt::format("plan {} {}, serial number {}", plan.name, plan.version, of.serial),
            .wait = given.wait};
}

static exit_code run_steps(const test_plan &plan, steps_view steps, const order &given)
{
    station::watch_signals(station::signal_policy::leave);
    ignore_deadly_signals();
    check_operator(steps, given);
    check_results(given.results);
    if (!given.wait)
        station::refuse_if_held(given.directory); /* before anybody types for nothing */
    const identity of = identify(plan, given.of, !given.no_input);
    station::watch_signals(station::signal_policy::note);
    try {
        const auto results = std::filesystem::absolute(given.results);
        station::enter_directory(given.directory);
        station::notice others("plan", !given.no_progress);
        const station::service_lock alone(claim_for(plan, of, given), others);
        console shown(plan, of, steps, {.progress = !given.no_progress, .aside = given.json});
        return run_recorded(plan, of, steps, given, results, shown);
    } catch (const station::no_reply &) {
        throw;
    } catch (const std::exception &error) {
        if (!given.json)
            print("RESULTS NOT SAVED  nothing can be said about this unit: run the plan again\n");
        return fail(given, exit_code::not_saved, error.what(), word_of(common::verdict::no_verdict));
    }
}

exit_code run_plan(const order &given)
{
    const test_plan plan = read_plan(given.file);
    const std::vector<const step *> steps = select(plan, given);
    if (steps.empty())
        return fail(given, exit_code::nothing_run, "nothing was run: --only and --skip leave no step",
                    word_of(common::verdict::unjudged));
    if (given.dry_run) {
        print(given.json ? list_steps_json(plan, steps) : list_steps(plan, steps));
        return exit_code::passed;
    }
    return run_steps(plan, steps, given);
}

} // namespace plan
