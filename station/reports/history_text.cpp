/* SPDX-License-Identifier: MIT
 *
 * The history of many runs, for people and for programs.
 */
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/text.h"
#include "history.h"
#include "report_parts.h"

namespace reports
{

using nlohmann::ordered_json;

constexpr size_t MOST_REASONS = 10, MOST_PORTS = 10;

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
                                word_of(static_cast<common::run_result>(i)));
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
    std::string first = line("First-pass yield", runs.first_passes);
    if (runs.first_passes_by_retry > 0)
        first += fmt::format(", {} only by trying a step again", runs.first_passes_by_retry);
    return first + fmt::format("\n{:17} first run of each unit that came to a verdict\n", "") +
           line("After all runs", runs.final_passes) + "\n";
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

static std::string rarer_text(size_t all, size_t rows, const char *noun)
{
    return all > rows ? fmt::format("{:13}and {}\n", "", counted(all - rows, noun)) : "";
}

static std::string reasons_text(const history &runs, size_t columns)
{
    if (runs.reasons.empty())
        return "";
    std::string text = "\nWhy units fail\nunits  runs  step, check\n";
    for (size_t i = 0; i < runs.reasons.size() && i < MOST_REASONS; i++) {
        const failure_reason &reason = runs.reasons[i];
        text += fmt::format("{:>5}  {:>4}  {}\n{:13}{}\n", reason.count.units, reason.count.runs,
                            common::wrapped(fmt::format("{}, {}", reason.step, reason.check), 13, columns), "",
                            common::wrapped("such as " + reason.example, 13, columns));
    }
    return text + rarer_text(runs.reasons.size(), MOST_REASONS, "rarer reason");
}

static std::string ports_text(const history &runs, size_t columns)
{
    if (runs.ports.empty())
        return "";
    std::string text = "\nWhich ports fail\nunits  runs  port, and the checks with their runs\n";
    for (size_t i = 0; i < runs.ports.size() && i < MOST_PORTS; i++) {
        const failing_port &port = runs.ports[i];
        std::string checks;
        for (const auto &[check, count] : port.checks)
            checks += fmt::format("{}{} {}", checks.empty() ? ": " : ", ", check, count.runs);
        text += fmt::format("{:>5}  {:>4}  {}\n", port.count.units, port.count.runs,
                            common::wrapped(port.name + checks, 13, columns));
    }
    return text + rarer_text(runs.ports.size(), MOST_PORTS, "other port");
}

std::string runs_text(const history &runs)
{
    std::string text =
        fmt::format("{:<19}  {:<11}  {:>8}  serial, plan, folder\n", "started (UTC)", "result", "failures");
    for (const run_row &run : runs.list)
        text += fmt::format(
            "{:<19}  {:<11}  {:>8}  {}\n", run.started.substr(0, 19), word_of(run.result), run.failures,
            common::escaped(fmt::format("{}, {}, {}", run.serial.empty() ? "-" : run.serial, run.plan, run.folder)));
    return runs.list.empty() ? "" : text + "\n";
}

static std::string skipped_text(const history &runs)
{
    if (runs.skipped.empty())
        return "";
    std::string names;
    for (const std::string &folder : runs.skipped)
        names += (names.empty() ? "" : ", ") + common::escaped(folder);
    return fmt::format("\n{} not a run: {}\n", counted(runs.skipped.size(), "folder"), names);
}

std::string history_text(const history &runs, size_t columns)
{
    if (runs.list.empty())
        return "No runs\n" + skipped_text(runs);
    return fmt::format("{} of {}: {}\n\n", counted(runs.list.size(), "run"), counted(runs.units, "unit"),
                       results_text(runs)) +
           yield_text(runs) + partial_text(runs) + times_text(runs) + reasons_text(runs, columns) +
           ports_text(runs, columns) + skipped_text(runs);
}

static ordered_json yield_json(size_t passed, size_t all)
{
    return {{"passed", passed}, {"of", all}, {"percent", percent(passed, all)}};
}

static ordered_json run_json(const run_row &run)
{
    ordered_json object{
        {"folder", run.folder},    {"started", run.started}, {"serial", run.serial},           {"plan", run.plan},
        {"product", run.product},  {"station", run.station}, {"verdict", word_of(run.result)}, {"partial", run.partial},
        {"failures", run.failures}};
    if (run.seconds)
        object["seconds"] = *run.seconds;
    return object;
}

static ordered_json port_json(const failing_port &port)
{
    ordered_json object{{"where", port.name}, {"units", port.count.units}, {"runs", port.count.runs}};
    for (const auto &[check, count] : port.checks)
        object["checks"].push_back({{"check", check}, {"units", count.units}, {"runs", count.runs}});
    return object;
}

std::string history_json(const history &runs)
{
    ordered_json object{{"runs", runs.list.size()}, {"units", runs.units}, {"partial", runs.partial}};
    for (size_t i = 0; i < runs.by_result.size(); i++)
        object["results"][word_of(static_cast<common::run_result>(i))] = runs.by_result[i];
    if (runs.judged_units > 0) {
        object["first_pass"] = yield_json(runs.first_passes, runs.judged_units);
        object["first_pass"]["by_retry"] = runs.first_passes_by_retry;
        object["after_all_runs"] = yield_json(runs.final_passes, runs.judged_units);
    }
    if (!runs.seconds.empty())
        object["seconds"] = {
            {"shortest", runs.seconds.front()}, {"median", median(runs.seconds)}, {"longest", runs.seconds.back()}};
    object["failures"] = ordered_json::array();
    for (const failure_reason &reason : runs.reasons)
        object["failures"].push_back({{"step", reason.step},
                                      {"check", reason.check},
                                      {"units", reason.count.units},
                                      {"runs", reason.count.runs},
                                      {"example", reason.example}});
    object["ports"] = ordered_json::array();
    for (const failing_port &port : runs.ports)
        object["ports"].push_back(port_json(port));
    object["run_list"] = ordered_json::array();
    for (const run_row &run : runs.list)
        object["run_list"].push_back(run_json(run));
    object["skipped"] = runs.skipped;
    return object.dump(2) + "\n";
}

} // namespace reports
