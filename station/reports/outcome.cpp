/* SPDX-License-Identifier: MIT
 *
 * What a run came to: in a code and in one JSON object for programs, and in a few words under its result.
 */
#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/text.h"
#include "report_parts.h"
#include "reports.h"

namespace reports
{

using common::exit_code;
using common::run_result;
using common::verdict;
using journal::attempt;
using nlohmann::ordered_json;

/* That of SIGINT when the journal does not say which signal it was. */
static exit_code interruption_code(const journal::run_record &run)
{
    for (const auto &[name, code] :
         {std::pair{"SIGHUP", exit_code::hung_up}, {"SIGQUIT", exit_code::quit}, {"SIGTERM", exit_code::terminated}})
        if (run.signal == name)
            return code;
    return exit_code::interrupted;
}

exit_code exit_code_of(const journal::run_record &run)
{
    switch (run.result) {
    case run_result::pass:
        return exit_code::passed;
    case run_result::fail:
        return exit_code::failed;
    case run_result::unjudged:
        return exit_code::nothing_run;
    case run_result::partial:
        return exit_code::partial;
    case run_result::interrupted:
        return interruption_code(run);
    case run_result::no_verdict:
    case run_result::incomplete:
        break;
    }
    return exit_code::no_verdict;
}

/* A step counts by its first attempt: whoever interrupts a later one has had the step run. */
static std::string omission_text(const journal::run_record &run)
{
    const auto is_first = [](const attempt &step) { return step.number == 1; };
    const auto is_run = [&](const attempt &step) { return is_first(step) && step.verdict != verdict::not_run; };
    const auto steps = std::ranges::count_if(run.attempts, is_first),
               done = std::ranges::count_if(run.attempts, is_run);
    if (done == steps)
        return run.partial ? "steps were left out" : "";
    return fmt::format("of {} only {} run", counted(static_cast<size_t>(steps), "step"),
                       done == 0   ? "none was"
                       : done == 1 ? "1 was"
                                   : fmt::format("{} were", done));
}

std::string shortfall_text(const journal::run_record &run)
{
    const bool interrupted = run.result == run_result::interrupted;
    const std::string omission = run.partial || interrupted ? omission_text(run) : "";
    const std::string by = run.signal.empty() ? "interrupted" : "interrupted by " + run.signal;
    return (interrupted ? by : "") + (interrupted && !omission.empty() ? "; " : "") + omission +
           (omission.empty() ? "" : ": this is not the whole plan");
}

bool is_whole_plan(const journal::run_record &run)
{
    return shortfall_text(run).empty() && run.result != run_result::incomplete;
}

/* "11 of 13 steps passed, 2 not judged": what the last attempts at the steps came to. */
static std::string step_counts(const journal::run_record &run)
{
    const auto steps = static_cast<size_t>(std::ranges::count_if(run.attempts, &attempt::is_last));
    const auto count = [&](verdict of) {
        return static_cast<size_t>(std::ranges::count_if(
            run.attempts, [&](const attempt &step) { return step.is_last && step.verdict == of; }));
    };
    const size_t passed = count(verdict::pass);
    if (steps == 0)
        return "no step was run";
    if (passed == steps)
        return std::ranges::any_of(run.attempts, journal::passed_by_retry) ? "after steps were tried again"
                                                                           : "every step passed";
    std::string text = fmt::format("{} of {} passed", passed, counted(steps, "step"));
    for (const verdict other : {verdict::not_run, verdict::not_tested, verdict::unjudged, verdict::retried})
        if (const size_t others = count(other); others > 0)
            text += fmt::format(", {} {}", others, word_of(other));
    return text;
}

/* Of a run that ended with something else than PASS. */
static std::string outcome_text(const journal::run_record &run, size_t failed)
{
    switch (run.result) {
    case run_result::pass:
        return step_counts(run);
    case run_result::no_verdict:
        return "no verdict on the unit";
    case run_result::unjudged:
        return "nothing was judged";
    case run_result::incomplete:
        return "the run was cut off; no pass";
    case run_result::fail:
    case run_result::interrupted:
    case run_result::partial:
        break;
    }
    return failed == 0 && run.result != run_result::fail ? "" : counted(failed, "failed check");
}

std::string headline(const journal::run_record &run)
{
    const std::string outcome = outcome_text(run, failures_of(run).size()), shortfall = shortfall_text(run);
    return outcome + (outcome.empty() || shortfall.empty() ? "" : "; ") + shortfall;
}

static ordered_json failure_json(const finding &one)
{
    ordered_json object{{"where", one.check.where.name}};
    if (one.check.where.port > 0)
        object["port"] = one.check.where.port;
    object.update({{"step", one.step}, {"check", one.check.name}, {"sentence", one.check.sentence}});
    return object;
}

static ordered_json fault_json(const finding &one)
{
    return {{"step", one.step}, {"symptom", one.check.name}, {"sentence", one.check.sentence}};
}

static ordered_json step_json(const journal::attempt &step)
{
    return {{"step", step.step},
            {"request", step.request},
            {"verdict", word_of(step.verdict)},
            {"attempts", step.number},
            {"seconds", time_of(step).value_or(0)},
            {"summary", step.summary}};
}

std::string run_json(const journal::run_record &run, const std::filesystem::path &run_dir,
                     const std::optional<std::string> &not_saved)
{
    ordered_json object{{"verdict", word_of(run.result)},
                        {"exit_code", static_cast<int>(not_saved ? common::exit_code::not_saved : exit_code_of(run))},
                        {"summary", headline(run)},
                        {"run_dir", common::printable(run_dir.string())},
                        {"serial", run.serial},
                        {"product", run.product},
                        {"plan", run.plan},
                        {"plan_version", run.version},
                        {"plan_sha256", run.plan_sha256},
                        {"whole_plan", is_whole_plan(run)},
                        {"operator", run.operator_name},
                        {"station", run.station},
                        {"run_id", run.run_id},
                        {"started", run.start.text},
                        {"ended", run.end.text},
                        {"failures", ordered_json::array()},
                        {"faults", ordered_json::array()},
                        {"steps", ordered_json::array()}};
    if (not_saved)
        object["error"] = common::printable(*not_saved);
    for (const finding &one : failures_of(run))
        object["failures"].push_back(failure_json(one));
    for (const finding &one : faults_of(run))
        object["faults"].push_back(fault_json(one));
    for (const journal::attempt &step : run.attempts)
        if (step.is_last)
            object["steps"].push_back(step_json(step));
    return object.dump(2) + "\n";
}

} // namespace reports
