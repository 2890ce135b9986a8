/* SPDX-License-Identifier: MIT
 *
 * What many runs come to: yield, why units fail, and how long it takes.
 */
#include "history.h"

#include <algorithm>
#include <map>
#include <set>

#include "findings.h"
#include "text/printable.h"

namespace reports
{

using journal::run_record;
using journal::run_result;

/* What is kept of a run; a whole record of each would be much. */
struct past_run {
    std::string folder, serial;
    int64_t start_ms;
    bool judged, passed;
    bool needed_retry;
};

/* The units that a check failed, by step and check. */
struct reason_units {
    std::set<std::string> units = {};
    std::string example = {};
};
using reason_map = std::map<std::pair<std::string, std::string>, reason_units>;

static std::vector<std::filesystem::path> folders_in(const std::filesystem::path &dir)
{
    std::vector<std::filesystem::path> folders;
    for (const auto &entry : std::filesystem::directory_iterator(dir)) {
        std::error_code unreadable;
        if (entry.is_directory(unreadable))
            folders.push_back(entry.path());
    }
    std::ranges::sort(folders);
    return folders;
}

static void add_reasons(reason_map &reasons, const run_record &run, const std::vector<finding> &failures)
{
    for (const finding &one : failures) {
        reason_units &reason = reasons[{one.step, one.check}];
        reason.units.insert(run.serial);
        if (reason.example.empty())
            reason.example = (one.where.port > 0 ? one.where.name + ": " : "") + one.sentence;
    }
}

static past_run add_run(history &runs, reason_map &reasons, const std::filesystem::path &folder)
{
    const run_record run = journal::read_run(folder);
    runs.runs++;
    runs.by_result[static_cast<size_t>(run.result)]++;
    runs.partial += run.partial ? 1 : 0;
    const std::vector<finding> failures = failures_of(run);
    add_reasons(reasons, run, failures);
    const bool passed = run.result == run_result::pass, ended = passed || run.result == run_result::fail;
    if (const auto took = seconds_between(run.start, run.end); took && ended && !run.partial)
        runs.seconds.push_back(*took);
    return {folder.filename().string(),
            run.serial,
            run.start.ms.value_or(0),
            !run.partial && (ended || !failures.empty()),
            passed,
            std::ranges::any_of(run.attempts, journal::passed_by_retry)};
}

/* The first and the last run of each unit that came to a verdict say how it fared. */
static void add_units(history &runs, std::vector<past_run> all)
{
    std::ranges::sort(all, {}, [](const past_run &run) { return std::tie(run.start_ms, run.folder); });
    std::map<std::string, std::vector<const past_run *>> units;
    for (const past_run &run : all)
        if (auto &judged = units[run.serial]; run.judged)
            judged.push_back(&run);
    units.erase("");
    runs.units = units.size();
    for (const auto &[serial, judged] : units) {
        if (judged.empty())
            continue;
        const bool passed = judged.front()->passed;
        runs.judged_units++;
        runs.passed_first += passed ? 1 : 0;
        runs.passed_first_by_retry += passed && judged.front()->needed_retry ? 1 : 0;
        runs.passed_last += judged.back()->passed ? 1 : 0;
    }
}

static std::vector<failure_reason> most_frequent(const reason_map &reasons)
{
    std::vector<failure_reason> listed;
    for (const auto &[name, reason] : reasons)
        listed.push_back({name.first, name.second, reason.units.size(), reason.example});
    std::ranges::stable_sort(listed, std::ranges::greater{}, &failure_reason::units);
    return listed;
}

history read_history(const std::filesystem::path &dir)
{
    history runs;
    reason_map reasons;
    std::vector<past_run> all;
    for (const auto &folder : folders_in(dir))
        try {
            all.push_back(add_run(runs, reasons, folder));
        } catch (const journal::no_journal &) {
            runs.skipped.push_back(text::printable(folder.filename().string()));
        }
    add_units(runs, std::move(all));
    runs.reasons = most_frequent(reasons);
    std::ranges::sort(runs.seconds);
    return runs;
}

} // namespace reports
