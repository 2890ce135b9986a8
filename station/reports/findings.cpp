/* SPDX-License-Identifier: MIT
 *
 * What the reports have in common: what failed, what the station could not do, and numbers and times in words.
 */
#include "findings.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/duration.h"

namespace reports
{

using journal::verdict;

static std::string sentence_or(const std::string &sentence, const char *otherwise)
{
    return sentence.empty() ? otherwise : sentence;
}

/* A port that is tested in two ways may fail twice in the same words. */
static void add_once(std::vector<finding> &failures, const finding &found)
{
    const auto told = [&](const finding &one) {
        return one.where.id == found.where.id && one.step == found.step && one.check == found.check &&
               one.sentence == found.sentence;
    };
    if (std::ranges::none_of(failures, told))
        failures.push_back(found);
}

std::vector<finding> failures_of(const journal::run_record &run)
{
    std::vector<finding> failures;
    for (const journal::attempt &tried : run.attempts) {
        const size_t before = failures.size();
        for (const journal::observation &made : tried.checks)
            if (made.judged == verdict::fail)
                add_once(failures, {made.where, tried.step, made.name, sentence_or(made.message, no_reason)});
        if (tried.judged == verdict::fail && failures.size() == before)
            failures.push_back({{"unit", "unit"}, tried.step, "step", sentence_or(tried.summary, no_reason)});
    }
    std::ranges::stable_sort(failures, {}, [](const finding &one) { return one.where.port; });
    return failures;
}

std::vector<finding> repaired_in(const journal::run_record &run)
{
    std::vector<finding> repaired;
    const std::vector<finding> failures = failures_of(run);
    for (const journal::attempt &tried : run.attempts)
        for (const journal::observation &made : tried.checks) {
            const bool failed_again = std::ranges::any_of(failures, [&](const finding &one) {
                return one.where.id == made.where.id && one.step == tried.step && one.check == made.name;
            });
            if (made.judged == verdict::retried && !failed_again)
                add_once(repaired, {made.where, tried.step, made.name, sentence_or(made.message, no_reason)});
        }
    return repaired;
}

static finding fault_of(const std::string &step, const journal::fault &wrong)
{
    return {{}, step, wrong.symptom, sentence_or(wrong.message, no_reason)};
}

std::vector<finding> faults_of(const journal::run_record &run)
{
    std::vector<finding> faults;
    for (const journal::fault &wrong : run.errors)
        faults.push_back(fault_of("", wrong));
    for (const journal::attempt &tried : run.attempts) {
        for (const journal::fault &wrong : tried.errors)
            faults.push_back(fault_of(tried.step, wrong));
        if (tried.errors.empty() && tried.judged == verdict::no_verdict)
            faults.push_back(fault_of(tried.step, {"no-verdict", tried.summary}));
    }
    if (run.result == journal::run_result::incomplete)
        faults.push_back({{}, "", "incomplete", no_end});
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
constexpr sign signs[] = {{"EQUAL", "exactly"},       {"NOT_EQUAL", "not"},
                          {"LESS_THAN", "<"},         {"LESS_THAN_OR_EQUAL", "<="},
                          {"GREATER_THAN", ">"},      {"GREATER_THAN_OR_EQUAL", ">="},
                          {"REGEX_MATCH", "matches"}, {"REGEX_NO_MATCH", "does not match"},
                          {"IN_SET", "in"},           {"NOT_IN_SET", "not in"}};

static std::string limits_text(const std::vector<journal::limit> &limits, const std::string &unit)
{
    std::string text;
    for (const journal::limit &one : limits) {
        const auto *known = std::ranges::find_if(signs, [&](const sign &shown) { return one.type == shown.type; });
        text += text.empty() ? "" : ", ";
        text +=
            (known != std::end(signs) ? known->text : one.type) + " " + one.value + (unit.empty() ? "" : " " + unit);
    }
    return text;
}

std::string limits_text(const std::vector<journal::limit> &limits)
{
    return limits_text(limits, "");
}

std::string limits_with_unit(const journal::observation &made)
{
    return limits_text(made.limits, made.is_number ? made.unit : "");
}

} // namespace reports
