/* SPDX-License-Identifier: MIT */
#include "history.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "common/text.h"
#include "report_parts.h"
#include "station/journal/journal_text.h"

namespace reports
{

using common::run_result;
using journal::run_record;

/* What is kept of a run; a whole record of each would be much. */
struct past_run {
    std::string folder, serial;
    int64_t start_ms;
    bool has_verdict, passed;
    bool needed_retry;
};

/* What failed, and in which units and runs. */
struct failed_units {
    std::set<std::string> units = {}, runs = {};

    void add(const run_record &run, const std::string &folder)
    {
        if (!run.serial.empty())
            units.insert(run.serial);
        runs.insert(folder);
    }
    failure_count count() const
    {
        return {units.size(), runs.size()};
    }
};

struct failed_check {
    failed_units failed = {};
    std::string example = {};
};

struct failed_port {
    failed_units failed = {};
    std::map<std::string, failed_units> checks = {};
};

struct failure_maps {
    std::map<std::pair<std::string, std::string>, failed_check> by_check = {}; /* step and check */
    std::map<std::pair<int, std::string>, failed_port> by_port = {};           /* number and name */
};

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

static void add_failures(failure_maps &maps, const run_record &run, const std::string &folder,
                         const std::vector<finding> &failures)
{
    for (const finding &one : failures) {
        const common::place &where = one.check.where;
        failed_check &check = maps.by_check[{one.step, one.check.name}];
        check.failed.add(run, folder);
        if (check.example.empty())
            check.example = (where.port > 0 ? where.name + ": " : "") + one.check.sentence;
        if (where.port == 0)
            continue;
        failed_port &port = maps.by_port[{where.port, where.name}];
        port.failed.add(run, folder);
        port.checks[one.check.name].add(run, folder);
    }
}

bool is_day(const std::string &text)
{
    return text.size() == std::string_view("2026-11-23").size() && journal::parse_timestamp(text + "T00:00:00.000Z");
}

static bool passes(const history_filter &filter, const run_record &run)
{
    const std::pair<const std::string &, const std::string &> criteria[] = {{filter.plan, run.plan},
                                                                            {filter.product, run.product},
                                                                            {filter.station, run.station},
                                                                            {filter.serial, run.serial}};
    const std::string day = run.start.text.substr(0, 10);
    return std::ranges::all_of(criteria,
                               [](const auto &one) { return one.first.empty() || one.first == one.second; }) &&
           (filter.since.empty() || day >= filter.since) && (filter.until.empty() || day <= filter.until);
}

static past_run add_run(history &runs, failure_maps &maps, const std::string &folder, const run_record &run)
{
    const std::vector<finding> failures = failures_of(run);
    const auto took = seconds_between(run.start, run.end);
    runs.list.push_back({common::printable(folder), run.start.text, run.serial, run.plan, run.product, run.station,
                         run.result, run.partial, took, failures.size()});
    runs.by_result[static_cast<size_t>(run.result)]++;
    runs.partial += run.partial ? 1 : 0;
    add_failures(maps, run, folder, failures);
    const bool passed = run.result == run_result::pass, ended = passed || run.result == run_result::fail;
    if (took && ended && !run.partial)
        runs.seconds.push_back(*took);
    return {folder,
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
        if (auto &decisive = units[run.serial]; run.has_verdict)
            decisive.push_back(&run);
    units.erase("");
    runs.units = units.size();
    for (const auto &[serial, decisive] : units) {
        if (decisive.empty())
            continue;
        const bool passed = decisive.front()->passed;
        runs.judged_units++;
        runs.first_passes += passed ? 1 : 0;
        runs.first_passes_by_retry += passed && decisive.front()->needed_retry ? 1 : 0;
        runs.final_passes += decisive.back()->passed ? 1 : 0;
    }
}

/* By the number of units, then of runs; otherwise as they are. */
static void sort_by_count(auto &list, auto count)
{
    std::ranges::stable_sort(list, std::ranges::greater{}, [&](const auto &one) {
        const failure_count &number = std::invoke(count, one);
        return std::pair(number.units, number.runs);
    });
}

static std::vector<failure_reason> reasons_of(const failure_maps &maps)
{
    std::vector<failure_reason> reasons;
    for (const auto &[name, check] : maps.by_check)
        reasons.push_back({name.first, name.second, check.failed.count(), check.example});
    sort_by_count(reasons, &failure_reason::count);
    return reasons;
}

static std::vector<failing_port> ports_of(const failure_maps &maps)
{
    std::vector<failing_port> ports;
    for (const auto &[name, port] : maps.by_port) {
        failing_port &entry = ports.emplace_back(failing_port{name.second, port.failed.count()});
        for (const auto &[check, failed] : port.checks)
            entry.checks.emplace_back(check, failed.count());
        sort_by_count(entry.checks, [](const auto &one) { return one.second; });
    }
    sort_by_count(ports, &failing_port::count);
    return ports;
}

history read_history(const std::filesystem::path &dir, const history_filter &filter)
{
    history runs;
    failure_maps maps;
    std::vector<past_run> all;
    for (const auto &folder : folders_in(dir))
        try {
            const run_record run = journal::read_run(folder);
            if (passes(filter, run))
                all.push_back(add_run(runs, maps, folder.filename().string(), run));
        } catch (const journal::no_journal &) {
            runs.skipped.push_back(common::printable(folder.filename().string()));
        }
    add_units(runs, std::move(all));
    runs.reasons = reasons_of(maps);
    runs.ports = ports_of(maps);
    std::ranges::sort(runs.seconds);
    return runs;
}

} // namespace reports
