/* SPDX-License-Identifier: MIT */
#include "run_plan.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "common/program.h"
#include "common/terminal.h"
#include "common/text.h"
#include "common/words.h"
#include "identity.h"
#include "operator.h"
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

/* What cannot be told by the journal of the run: why, on stderr and to programs. */
static exit_code fail(const order &job, exit_code code, const std::string &why, const char *word)
{
    common::say(fmt::format("facmsg-station: plan: {}", why));
    if (job.json)
        print(common::error_json(code, why, word));
    return code;
}

/* By only and skip a reader knows a run of a part of the plan; a choice of all its steps is none. */
static nlohmann::ordered_json parameters_of(const order &job, const test_plan &plan, size_t steps)
{
    const bool is_whole = steps == plan.steps.size();
    nlohmann::ordered_json parameters{
        {"plan", job.file}, {"plan_sha256", plan.sha256}, {"stop_on_fail", job.stop_on_fail}, {"steps", steps}};
    if (!job.only.empty() && !is_whole)
        parameters["only"] = job.only;
    if (!job.skip.empty() && !is_whole)
        parameters["skip"] = job.skip;
    return parameters;
}

/* Everything from here on is in the journal before it is anywhere else. */
static exit_code run_recorded(const test_plan &plan, const identity &of, steps_view steps, const order &job,
                              const std::filesystem::path &results, console &screen)
{
    const auto run_dir = journal::create_run_folder(results, folder_name(of.serial));
    journal::writer journal(run_dir);
    journal.run_start(run_head(plan, of, job.command_line, parameters_of(job, plan, steps.size())));
    const run_settings settings{job.directory, job.stop_on_fail, std::chrono::seconds(job.grace_s),
                                std::chrono::seconds(job.busy_timeout_s)};
    const run_end end = runner(plan, steps, settings, journal, screen).run();
    record_left_out(journal, plan, steps);
    record_end(journal, end.status, end.interrupted);
    const journal::run_record record = journal::read_run(run_dir);
    try {
        reports::write_reports(run_dir, record);
    } catch (const std::system_error &error) {
        common::say(fmt::format("facmsg-station: plan: {}", error.what()));
        print(job.json ? reports::run_json(record, run_dir, error.what()) : reports::unsaved_text(run_dir));
        return exit_code::not_saved;
    }
    print(job.json ? reports::run_json(record, run_dir)
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
static void check_operator(steps_view steps, const order &job)
{
    const auto waits = std::ranges::find_if(steps, [](const step *task) { return is_by_hand(*task); });
    if (waits != steps.end() && (job.no_input || !somebody_there()))
        throw station::usage_error(
            fmt::format("step {} waits for the operator, but {}; allowed: --skip {}", (*waits)->name,
                        job.no_input ? "--no-input was given" : "there is no terminal to ask at", (*waits)->name));
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
static station::claim claim_for(const test_plan &plan, const identity &of, const order &job)
{
    return {.directory = job.directory,
            .purpose = fmt::format("plan {} {}, serial number {}", plan.name, plan.version, of.serial),
            .wait = job.wait};
}

static exit_code run_steps(const test_plan &plan, steps_view steps, const order &job)
{
    station::watch_signals(station::signal_policy::leave);
    ignore_deadly_signals();
    check_operator(steps, job);
    check_results(job.results);
    if (!job.wait)
        station::refuse_if_held(job.directory); /* before anybody types for nothing */
    const identity of = identify(plan, job.of, !job.no_input);
    station::watch_signals(station::signal_policy::note);
    try {
        const auto results = std::filesystem::absolute(job.results);
        station::enter_directory(job.directory);
        station::notice others("plan", !job.no_progress);
        const station::service_lock alone(claim_for(plan, of, job), others);
        console screen(plan, of, steps, {.progress = !job.no_progress, .aside = job.json});
        return run_recorded(plan, of, steps, job, results, screen);
    } catch (const station::no_reply &) {
        throw;
    } catch (const std::exception &error) {
        if (!job.json)
            print("RESULTS NOT SAVED  nothing can be said about this unit: run the plan again\n");
        return fail(job, exit_code::not_saved, error.what(), word_of(common::verdict::no_verdict));
    }
}

exit_code run_plan(const order &job)
{
    const test_plan plan = read_plan(job.file);
    const std::vector<const step *> steps = select_steps(plan, job.only, job.skip);
    if (steps.empty())
        return fail(job, exit_code::nothing_run, "nothing was run: --only and --skip leave no step",
                    word_of(common::verdict::unjudged));
    if (job.dry_run) {
        const common::terminal output = common::terminal_of(STDOUT_FILENO);
        print(job.json ? list_steps_json(plan, steps) : list_steps(plan, steps, output.there ? output.width : 0));
        return exit_code::passed;
    }
    return run_steps(plan, steps, job);
}

} // namespace plan
