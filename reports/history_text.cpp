/* SPDX-License-Identifier: MIT
 *
 * The history of many runs, for people and for programs.
 */
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "findings.h"
#include "history.h"
#include "text/say.h"
#include "text/wrap.h"

namespace reports
{

using nlohmann::ordered_json;

constexpr size_t most_reasons = 10;

static double median(const std::vector<double> &ascending)
{
    const size_t middle = ascending.size() / 2;
    return ascending.size() % 2 == 1 ? ascending[middle] : (ascending[middle - 1] + ascending[middle]) / 2;
}

static double percent(size_t part, size_t whole)
{
    return 100 * static_cast<double>(part) / static_cast<double>(whole);
}

static std::string results_text(const history &runs)
{
    std::string text;
    for (size_t i = 0; i < runs.by_result.size(); i++)
        if (runs.by_result[i] > 0)
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", runs.by_result[i],
                                word_of(static_cast<journal::run_result>(i)));
    return text;
}

static std::string yield_text(const history &runs)
{
    if (runs.judged_units == 0)
        return "First-pass yield  -  no run of a whole plan came to a verdict\n";
    const auto line = [&](const char *name, size_t passed) {
        return fmt::format("{:<17} {:5.1f} %  {} of {}", name, percent(passed, runs.judged_units), passed,
                           counted(runs.judged_units, "unit"));
    };
    std::string first = line("First-pass yield", runs.passed_first);
    if (runs.passed_first_by_retry > 0)
        first += fmt::format(", {} only by trying a step again", runs.passed_first_by_retry);
    return first + fmt::format("\n{:17} first run of each unit that came to a verdict\n", "") +
           line("After all runs", runs.passed_last) + "\n";
}

static std::string partial_text(const history &runs)
{
    return runs.partial == 0
               ? ""
               : fmt::format("Partial runs      {}, with steps left out, which say nothing of the yield\n",
                             runs.partial);
}

static std::string times_text(const history &runs)
{
    return runs.seconds.empty() ? ""
                                : fmt::format("Time of a run     shortest {}, median {}, longest {}\n",
                                              duration_text(runs.seconds.front()), duration_text(median(runs.seconds)),
                                              duration_text(runs.seconds.back()));
}

static std::string reasons_text(const history &runs)
{
    if (runs.reasons.empty())
        return "";
    std::string text = "\nWhy units fail\nunits  step, check\n";
    for (size_t i = 0; i < runs.reasons.size() && i < most_reasons; i++) {
        const failure_reason &reason = runs.reasons[i];
        text += fmt::format("{:>5}  {}\n       {}\n", reason.units,
                            text::wrapped(fmt::format("{}, {}", reason.step, reason.check), 7),
                            text::wrapped("such as " + reason.example, 7));
    }
    if (runs.reasons.size() > most_reasons)
        text += fmt::format("       and {}\n", counted(runs.reasons.size() - most_reasons, "rarer reason"));
    return text;
}

static std::string skipped_text(const history &runs)
{
    if (runs.skipped.empty())
        return "";
    std::string names;
    for (const std::string &folder : runs.skipped)
        names += (names.empty() ? "" : ", ") + text::escaped(folder);
    return fmt::format("\n{} not a run: {}\n", counted(runs.skipped.size(), "folder"), names);
}

std::string history_text(const history &runs)
{
    if (runs.runs == 0)
        return "No runs\n" + skipped_text(runs);
    return fmt::format("{} of {}: {}\n\n", counted(runs.runs, "run"), counted(runs.units, "unit"), results_text(runs)) +
           yield_text(runs) + partial_text(runs) + times_text(runs) + reasons_text(runs) + skipped_text(runs);
}

static ordered_json yield_json(size_t passed, size_t judged)
{
    return {{"passed", passed}, {"of", judged}, {"percent", percent(passed, judged)}};
}

std::string history_json(const history &runs)
{
    ordered_json object{{"runs", runs.runs}, {"units", runs.units}, {"partial", runs.partial}};
    for (size_t i = 0; i < runs.by_result.size(); i++)
        object["results"][word_of(static_cast<journal::run_result>(i))] = runs.by_result[i];
    if (runs.judged_units > 0) {
        object["first_pass"] = yield_json(runs.passed_first, runs.judged_units);
        object["first_pass"]["by_retry"] = runs.passed_first_by_retry;
        object["after_all_runs"] = yield_json(runs.passed_last, runs.judged_units);
    }
    if (!runs.seconds.empty())
        object["seconds"] = {
            {"shortest", runs.seconds.front()}, {"median", median(runs.seconds)}, {"longest", runs.seconds.back()}};
    object["failures"] = ordered_json::array();
    for (const failure_reason &reason : runs.reasons)
        object["failures"].push_back(
            {{"step", reason.step}, {"check", reason.check}, {"units", reason.units}, {"example", reason.example}});
    object["skipped"] = runs.skipped;
    return object.dump(2) + "\n";
}

} // namespace reports
