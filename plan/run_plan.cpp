/* SPDX-License-Identifier: MIT
 *
 * A plan from the command line to the verdict.
 */
#include "run_plan.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fmt/format.h>
#include <sstream>

#include "identity.h"
#include "journal/run_record.h"
#include "record.h"
#include "reports/reports.h"
#include "runner.h"
#include "station/carry_out.h"
#include "station/interruption.h"
#include "station/service_lock.h"
#include "text/nearest.h"
#include "text/say.h"

namespace plan
{

using station::exit_code;
using steps_view = std::span<const step *const>;

static void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/* The names of --only or --skip, all of them steps of the plan. */
static std::vector<std::string> step_names(const test_plan &plan, const char *option, const std::string &list)
{
    std::vector<std::string> names;
    std::istringstream items(list);
    for (std::string name; std::getline(items, name, ',');) {
        std::vector<std::string_view> known;
        for (const step &asked : plan.steps)
            known.emplace_back(asked.name);
        if (std::ranges::find(known, name) == known.end())
            throw station::usage_error(
                fmt::format("{}: unknown step '{}'{}", option, name, text::expected_one_of(name, known)));
        names.push_back(name);
    }
    return names;
}

static std::vector<const step *> select(const test_plan &plan, const order &given)
{
    const std::vector<std::string> only = step_names(plan, "--only", given.only);
    const std::vector<std::string> skipped = step_names(plan, "--skip", given.skip);
    std::vector<const step *> selected;
    for (const step &asked : plan.steps)
        if ((only.empty() || std::ranges::find(only, asked.name) != only.end()) &&
            std::ranges::find(skipped, asked.name) == skipped.end())
            selected.push_back(&asked);
    return selected;
}

static void list_steps(const test_plan &plan, steps_view steps)
{
    std::string text = fmt::format("{} {} for {}: {} steps, {} expected; nothing was sent\n", plan.name, plan.version,
                                   plan.product, steps.size(), expectation_text(steps));
    for (const step *asked : steps) {
        const int typical_s = asked->row->expected.typical_s;
        text += fmt::format("{:<16}  {}, at most {}", asked->name,
                            typical_s > 0 ? "about " + duration_text(typical_s) : "time unknown",
                            duration_text(asked->timeout_s));
        if (asked->attempts > 1)
            text += fmt::format(", up to {} attempts", asked->attempts);
        text += fmt::format("\n{:18}{}", "", asked->row->name);
        for (const auto &[name, value] : asked->options.items())
            text += fmt::format(" {}={}", name, value.get<std::string>());
        text += "\n";
    }
    print(text);
}

static nlohmann::ordered_json parameters_of(const order &given, size_t steps)
{
    nlohmann::ordered_json parameters{{"plan", given.file}, {"stop_on_fail", given.stop_on_fail}, {"steps", steps}};
    if (!given.only.empty())
        parameters["only"] = given.only;
    if (!given.skip.empty())
        parameters["skip"] = given.skip;
    return parameters;
}

static exit_code code_of(const run_end &end)
{
    if (end.interrupted)
        return station::noted_code();
    switch (end.status) {
    case journal::run_status::pass:
        return exit_code::passed;
    case journal::run_status::fail:
        return exit_code::failed;
    case journal::run_status::skip:
        return exit_code::nothing_run;
    case journal::run_status::error:
        break;
    }
    return exit_code::no_verdict;
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
    journal.run_start(run_head(plan, of, given.command_line, parameters_of(given, steps.size())));
    const run_settings settings{given.directory, given.stop_on_fail, std::chrono::seconds(given.grace_s),
                                std::chrono::seconds(given.busy_timeout_s)};
    const run_end end = runner(plan, steps, settings, journal, shown).run();
    record_left_out(journal, plan, steps);
    journal.run_end(end.status);
    const journal::run_record record = journal::read_run(run_dir);
    try {
        reports::write_reports(run_dir, record);
    } catch (const std::system_error &error) {
        text::say(fmt::format("facmsg-station: plan: {}", error.what()));
        print(fmt::format("RESULTS NOT SAVED  the journal of the run is complete, its reports are not; once there is "
                          "room for them:\n  facmsg-station report '{}'\n",
                          run_dir.string()));
        return exit_code::not_saved;
    }
    print(reports::verdict_text(record, run_dir, text::colour_wanted()));
    return code_of(end);
}

/* A closed stdout, or a limit on the size of files, must not end the program before the record does. */
static void ignore_deadly_signals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
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
    if (!given.wait)
        station::refuse_if_held(given.directory); /* before anybody types for nothing */
    const identity of = identify(plan, given.of, !given.no_input);
    station::watch_signals(station::signal_policy::note);
    try {
        const auto results = std::filesystem::absolute(given.results);
        station::enter_directory(given.directory);
        station::notice others("plan", !given.no_progress);
        const station::service_lock alone(claim_for(plan, of, given), others);
        console shown(plan, of, steps, !given.no_progress);
        return run_recorded(plan, of, steps, given, results, shown);
    } catch (const station::no_reply &) {
        throw;
    } catch (const std::exception &error) {
        text::say(fmt::format("facmsg-station: plan: {}", error.what()));
        print("RESULTS NOT SAVED  nothing can be said about this unit: run the plan again\n");
        return exit_code::not_saved;
    }
}

exit_code run_plan(const order &given)
{
    const test_plan plan = read_plan(given.file);
    const std::vector<const step *> steps = select(plan, given);
    if (steps.empty()) {
        text::say("facmsg-station: plan: nothing was run: --only and --skip leave no step");
        return exit_code::nothing_run;
    }
    if (given.dry_run) {
        list_steps(plan, steps);
        return exit_code::passed;
    }
    return run_steps(plan, steps, given);
}

} // namespace plan
