/* SPDX-License-Identifier: MIT
 *
 * The run as one page for the browser and the printer: the words and numbers for the template in report.mustache.
 */
#include <stdexcept>

#include "page_data.h"
#include "report_parts.h"
#include "reports.h"

namespace reports
{

extern const char *const report_template; /* the text of report.mustache */

using common::run_result;
using common::verdict;

data object(const members &rows)
{
    data result{data::type::object};
    for (const auto &[name, value] : rows)
        result.set(name, value);
    return result;
}

const char *style_of(verdict of)
{
    switch (of) {
    case verdict::pass:
        return "pass";
    case verdict::fail:
        return "fail";
    case verdict::no_verdict:
    case verdict::incomplete:
        return "error";
    case verdict::retried:
        return "warn";
    case verdict::unjudged:
        return "blue";
    case verdict::not_run:
    case verdict::not_tested:
        return "gray";
    case verdict::none:
        break;
    }
    return "none";
}

const char *style_of(run_result of)
{
    switch (of) {
    case run_result::pass:
        return "pass";
    case run_result::fail:
        return "fail";
    case run_result::partial:
        return "warn";
    case run_result::unjudged:
        return "gray";
    case run_result::no_verdict:
    case run_result::interrupted:
    case run_result::incomplete:
        break;
    }
    return "error";
}

std::string or_dash(const std::string &text)
{
    return text.empty() ? "–" : text;
}

static data finding_data(const finding &one)
{
    return object({{"where", one.check.where.name},
                   {"step", or_dash(one.step)},
                   {"check", one.check.name},
                   {"sentence", one.check.sentence}});
}

static data facts(const journal::run_record &run)
{
    const std::pair<const char *, std::string> rows[] = {
        {"Product", run.product},
        {"Plan", run.plan + (run.version.empty() ? "" : " " + run.version)},
        {"Station", run.station},
        {"Operator", run.operator_name},
        {"Started", time_text(run.start)},
        {run.result == common::run_result::incomplete ? "Last heard of" : "Finished", time_text(run.end)},
        {"Took", duration_text(seconds_between(run.start, run.end))},
        {"Run", run.run_id}};
    return list(rows, [](const auto &fact) { return object({{"name", fact.first}, {"value", or_dash(fact.second)}}); });
}

/* By what the run was made; what the journal does not say is left out. */
static std::string footer(const journal::run_record &run)
{
    const std::pair<const char *, const std::string &> parts[] = {{"Plan file ", run.plan_file},
                                                                  {"SHA-256 ", run.plan_sha256},
                                                                  {"station ", run.station_version},
                                                                  {"library ", run.library_version}};
    std::string text;
    for (const auto &[name, value] : parts)
        if (!value.empty())
            text += (text.empty() ? "" : ", ") + (name + value);
    return text;
}

static data page_of(const journal::run_record &run)
{
    const std::vector<finding> failures = failures_of(run), faults = faults_of(run), repaired = repaired_in(run);
    data page = object({{"result", word_of(run.result)},
                        {"style", style_of(run.result)},
                        {"headline", headline(run)},
                        {"serial", run.serial.empty() ? "unknown" : run.serial},
                        {"plan", run.plan},
                        {"facts", facts(run)},
                        {"has_failures", !failures.empty()},
                        {"failures", list(failures, finding_data)},
                        {"has_faults", !faults.empty()},
                        {"faults", list(faults, finding_data)},
                        {"has_repaired", !repaired.empty()},
                        {"repaired", list(repaired, finding_data)},
                        {"has_steps", !run.attempts.empty()},
                        {"steps", list(run.attempts, step_data)},
                        {"footer", footer(run)}});
    add_panel(page, run);
    return page;
}

std::string html_text(const journal::run_record &run)
{
    kainjow::mustache::mustache page(report_template);
    std::string text = page.render(page_of(run));
    if (!page.is_valid())
        throw std::logic_error(page.error_message());
    return text;
}

} // namespace reports
