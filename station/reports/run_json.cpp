/* SPDX-License-Identifier: MIT
 *
 * The run for programs: one JSON object with the verdict and what led to it.
 */
#include <nlohmann/json.hpp>

#include "common/text.h"
#include "ending.h"
#include "findings.h"
#include "reports.h"

namespace reports
{

using nlohmann::ordered_json;

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

static ordered_json step_json(const journal::attempt &tried)
{
    return {{"step", tried.step},
            {"request", tried.request},
            {"verdict", word_of(tried.verdict)},
            {"attempts", tried.number},
            {"seconds", seconds_between(tried.start, tried.end).value_or(0)},
            {"summary", tried.summary}};
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
    for (const journal::attempt &tried : run.attempts)
        if (tried.is_last)
            object["steps"].push_back(step_json(tried));
    return object.dump(2) + "\n";
}

} // namespace reports
