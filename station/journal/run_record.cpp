/* SPDX-License-Identifier: MIT */
#include "run_record.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

#include "common/text.h"
#include "journal_lines.h"
#include "journal_text.h"

namespace journal
{

static bool is_pass(run_result result)
{
    return result == run_result::pass || result == run_result::partial;
}

/* The verdict of a step about which no line says one: that of its worst check. */
static verdict worst_check(const attempt &step)
{
    verdict worst = verdict::none;
    for (const check &entry : step.checks)
        worst = prevailing(worst, entry.verdict);
    return worst == verdict::none ? verdict::unjudged : worst;
}

static bool is_chosen(const run_choice &choice, const std::string &step)
{
    const auto among = [&](const std::vector<std::string> &names) {
        return std::ranges::any_of(names, [&](const std::string &name) { return is_meant(name, step); });
    };
    return (choice.only.empty() || among(choice.only)) && !among(choice.skipped);
}

/* A run ends with SKIP when it was interrupted, when what passed is a part of the plan, and when nothing was judged.
 * Every journal with a digest of the plan says that it was interrupted; earlier ones tell it by steps that were chosen
 * and not run. A whole plan whose steps passed would have ended with a pass. */
static run_result result_of_skip(const run_record &run, const run_choice &choice)
{
    const auto has_last = [&](const auto &condition) {
        return std::ranges::any_of(run.attempts, [&](const attempt &step) { return step.is_last && condition(step); });
    };
    const bool passed = has_last([](const attempt &step) { return step.verdict == verdict::pass; });
    const bool cut_short = run.plan_sha256.empty() && has_last([&](const attempt &step) {
                               return step.verdict == verdict::not_run && is_chosen(choice, step.step);
                           });
    if (choice.interrupted || cut_short || (passed && !run.partial))
        return run_result::interrupted;
    return passed ? run_result::partial : run_result::unjudged;
}

/* A step that is repeated counts its attempts from 1 again. */
static void mark_last(run_record &run)
{
    std::map<std::string, attempt *, std::less<>> previous;
    for (attempt &step : run.attempts) {
        attempt *&before = previous[step.step];
        if (before != nullptr)
            before->is_last = step.number <= before->number;
        before = &step;
    }
}

/* A pass that the run's own steps contradict is none. */
static void find_contradiction(run_record &run)
{
    const auto wrong = std::ranges::find_if(
        run.attempts, [](const attempt &step) { return is_bad(step.verdict) || worst_check(step) == verdict::fail; });
    if (!is_pass(run.result) || wrong == run.attempts.end())
        return;
    run.errors.push_back(
        {"contradiction", fmt::format("The journal ends with {}, but its step {} is {}.", word_of(run.result),
                                      wrong->step, word_of(common::worse(wrong->verdict, worst_check(*wrong))))});
    run.result = run_result::no_verdict;
}

static void conclude(run_record &run, const run_choice &choice)
{
    for (attempt &step : run.attempts)
        if (step.end.text.empty()) {
            step.verdict = verdict::incomplete;
            step.summary = "The journal ends during this step.";
        } else if (step.verdict == verdict::none) {
            step.verdict = worst_check(step);
        }
    mark_last(run);
    std::ranges::stable_sort(run.ports, {}, &place::port);
    if (run.result == run_result::unjudged)
        run.result = result_of_skip(run, choice);
    else if (run.result == run_result::pass && run.partial)
        run.result = run_result::partial;
    find_contradiction(run);
}

/* Lines may have been lost or removed, and with them what failed. A failure is none the less one. That a part of the
 * plan ended as a pass of the whole, as it once did, is put right by calling it what it is. */
static void refuse_damaged_pass(run_record &run, std::string_view text)
{
    if (!is_pass(run.result))
        return;
    const check_outcome outcome = check_journal(text);
    const auto first =
        std::ranges::find_if(outcome.problems, [](const problem &one) { return one.sentence != PARTIAL_PASS; });
    if (first == outcome.problems.end())
        return;
    run.errors.push_back(
        {"invalid-journal", fmt::format("The journal ends with {}, but is not valid: line {}: {}.", word_of(run.result),
                                        first->line, common::printable(first->sentence))});
    run.result = run_result::no_verdict;
}

run_record read_run(const std::filesystem::path &run_dir)
try {
    const auto file = run_dir / FILE_NAME;
    const std::string text = read_text(file);
    run_record run;
    conclude(run, read_lines(text, file.string(), run));
    refuse_damaged_pass(run, text);
    return run;
} catch (const unreadable_file &why) {
    throw no_journal(why.what());
}

bool is_meant(const std::string &name, const std::string &step)
{
    return step == name || step.starts_with(name + ".");
}

std::optional<double> seconds_between(const moment &start, const moment &end)
{
    if (!start.ms || !end.ms)
        return std::nullopt;
    return static_cast<double>(std::max<int64_t>(0, *end.ms - *start.ms)) / 1000;
}

std::optional<double> time_of(const attempt &step)
{
    return seconds_between(step.begun, step.end);
}

bool passed_by_retry(const attempt &step)
{
    return step.verdict == verdict::pass && step.number > 1;
}

verdict prevailing(verdict a, verdict b)
{
    const bool judged_by_one =
        (a == verdict::pass && b == verdict::unjudged) || (a == verdict::unjudged && b == verdict::pass);
    return judged_by_one ? verdict::pass : common::worse(a, b);
}

} // namespace journal
