/* SPDX-License-Identifier: MIT */
#include "report_parts.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/words.h"

namespace reports
{

using common::verdict;

static finding finding_of(const std::string &step, common::check what)
{
    if (what.sentence.empty())
        what.sentence = NO_REASON;
    return {step, std::move(what)};
}

static bool is_same(const finding &one, const finding &other)
{
    return one.step == other.step && one.check.name == other.check.name && one.check.where.id == other.check.where.id;
}

/* A port that is tested in two ways may fail twice in the same words. */
static void add_once(std::vector<finding> &findings, finding added)
{
    const auto says_it = [&](const finding &one) {
        return is_same(one, added) && one.check.sentence == added.check.sentence;
    };
    if (std::ranges::none_of(findings, says_it))
        findings.push_back(std::move(added));
}

std::vector<finding> failures_of(const journal::run_record &run)
{
    std::vector<finding> failures;
    for (const journal::attempt &step : run.attempts) {
        const size_t before = failures.size();
        for (const common::check &one : step.checks)
            if (one.verdict == verdict::fail)
                add_once(failures, finding_of(step.step, one));
        if (step.verdict == verdict::fail && failures.size() == before)
            failures.push_back(finding_of(step.step, {"step", verdict::fail, step.summary, common::whole_unit()}));
    }
    std::ranges::stable_sort(failures, {}, [](const finding &one) { return one.check.where.port; });
    return failures;
}

std::vector<finding> repaired_in(const journal::run_record &run)
{
    std::vector<finding> repaired;
    const std::vector<finding> failures = failures_of(run);
    for (const journal::attempt &step : run.attempts)
        for (const common::check &one : step.checks) {
            const finding first = finding_of(step.step, one);
            const bool failed_again =
                std::ranges::any_of(failures, [&](const finding &later) { return is_same(later, first); });
            if (one.verdict == verdict::retried && !failed_again)
                add_once(repaired, first);
        }
    return repaired;
}

static finding fault_of(const std::string &step, const journal::fault &wrong)
{
    return finding_of(step, {wrong.symptom, verdict::no_verdict, wrong.message});
}

std::vector<finding> faults_of(const journal::run_record &run)
{
    std::vector<finding> faults;
    for (const journal::fault &wrong : run.errors)
        faults.push_back(fault_of("", wrong));
    for (const journal::attempt &step : run.attempts) {
        for (const journal::fault &wrong : step.errors)
            faults.push_back(fault_of(step.step, wrong));
        if (step.errors.empty() && step.verdict == verdict::no_verdict)
            faults.push_back(fault_of(step.step, {"no-verdict", step.summary}));
    }
    if (run.result == common::run_result::incomplete)
        faults.push_back(fault_of("", {"incomplete", NO_END}));
    return faults;
}

std::string duration_text(std::optional<double> seconds)
{
    return seconds ? common::duration_text(*seconds) : "-";
}

std::string time_text(const journal::moment &time)
{
    return time.ms ? fmt::format("{} {} UTC", time.text.substr(0, 10), time.text.substr(11, 8)) : time.text;
}

struct sign {
    const char *type, *text;
};
constexpr sign SIGNS[] = {{"EQUAL", "exactly"},       {"NOT_EQUAL", "not"},
                          {"LESS_THAN", "<"},         {"LESS_THAN_OR_EQUAL", "<="},
                          {"GREATER_THAN", ">"},      {"GREATER_THAN_OR_EQUAL", ">="},
                          {"REGEX_MATCH", "matches"}, {"REGEX_NO_MATCH", "does not match"},
                          {"IN_SET", "in"},           {"NOT_IN_SET", "not in"}};

static std::string limits_text(const std::vector<common::limit> &limits, const std::string &unit)
{
    std::string text;
    for (const common::limit &one : limits) {
        const auto *row = std::ranges::find_if(SIGNS, [&](const sign &entry) { return one.type == entry.type; });
        text += text.empty() ? "" : ", ";
        text +=
            (row != std::end(SIGNS) ? row->text : one.type) + " " + one.value.text() + (unit.empty() ? "" : " " + unit);
    }
    return text;
}

std::string limits_text(const std::vector<common::limit> &limits)
{
    return limits_text(limits, "");
}

std::string limits_with_unit(const common::check &entry)
{
    return limits_text(entry.limits, entry.value.is_number() ? entry.unit : "");
}

} // namespace reports
