/* SPDX-License-Identifier: MIT
 *
 * The run as one page for the browser and the printer: the words and numbers for the template in report.mustache.
 */
#include <algorithm>
#include <fmt/format.h>
#include <kainjow/mustache.hpp>
#include <stdexcept>

#include "ending.h"
#include "findings.h"
#include "panel.h"
#include "report_template.h"
#include "reports.h"
#include "step_table.h"

namespace reports
{

using journal::verdict;
using kainjow::mustache::data;

/* How a verdict looks: its colour in the template, and its mark on a port, which has room for five letters. */
struct look {
    verdict judged;
    const char *style, *mark, *meaning;
};
constexpr look looks[] = {
    {verdict::fail, "fail", "FAIL", "failed"},
    {verdict::no_verdict, "error", "ERR", "no verdict"},
    {verdict::incomplete, "error", "CUT", "cut off"},
    {verdict::not_tested, "gray", "N/T", "not tested"},
    {verdict::not_run, "gray", "N/R", "not run or not finished"},
    {verdict::retried, "warn", "RETRY", "failed, then tried again"},
    {verdict::unjudged, "blue", "N/J", "not judged"},
    {verdict::pass, "pass", "PASS", "passed"},
    {verdict::none, "none", "–", "in no test"},
};

static const look &look_of(verdict judged)
{
    return *std::ranges::find(looks, judged, &look::judged);
}

static const char *style_of(journal::run_result result)
{
    switch (result) {
    case journal::run_result::pass:
        return "pass";
    case journal::run_result::fail:
        return "fail";
    case journal::run_result::unjudged:
        return "gray";
    case journal::run_result::partial:
        return "warn";
    case journal::run_result::no_verdict:
    case journal::run_result::interrupted:
    case journal::run_result::incomplete:
        break;
    }
    return "error";
}

static bool is_bad(verdict judged)
{
    return judged == verdict::fail || judged == verdict::no_verdict || judged == verdict::incomplete;
}

using members = std::vector<std::pair<const char *, data>>;

static data object(const members &named)
{
    data made{data::type::object};
    for (const auto &[name, value] : named)
        made.set(name, value);
    return made;
}

/* A list of what make() makes of each element. */
static data list(const auto &elements, const auto &make)
{
    data made{data::type::list};
    for (const auto &element : elements)
        made.push_back(make(element));
    return made;
}

static std::string or_dash(const std::string &text)
{
    return text.empty() ? "–" : text;
}

static data finding_data(const finding &one)
{
    return object(
        {{"where", one.where.name}, {"step", or_dash(one.step)}, {"check", one.check}, {"sentence", one.sentence}});
}

static data facts(const journal::run_record &run)
{
    const std::pair<const char *, std::string> named[] = {
        {"Product", run.product},
        {"Plan", run.plan + (run.version.empty() ? "" : " " + run.version)},
        {"Station", run.station},
        {"Operator", run.operator_name},
        {"Started", time_text(run.start)},
        {run.result == journal::run_result::incomplete ? "Last heard of" : "Finished", time_text(run.end)},
        {"Took", duration_text(seconds_between(run.start, run.end))},
        {"Run", run.run_id}};
    return list(named, [](const auto &fact) {
        return object({{"name", fact.first}, {"value", or_dash(fact.second)}});
    });
}

constexpr int port_width = 42, port_height = 40, bay_margin = 5;

static data port_data(const panel_port &port)
{
    const look &shown = look_of(port.found->judged);
    return object({{"number", std::to_string(port.found->port.port)},
                   {"word", word_of(port.found->judged)},
                   {"style", shown.style},
                   {"mark", shown.mark},
                   {"sentence", port.found->sentence},
                   {"x", std::to_string(bay_margin + port.column * port_width)},
                   {"y", std::to_string(bay_margin + port.row * port_height)}});
}

static data block_data(const panel_block &block)
{
    const int width = 2 * bay_margin + block.columns * port_width, height = 2 * bay_margin + block.rows * port_height;
    return object({{"width", std::to_string(width)},
                   {"height", std::to_string(height)},
                   {"inner_width", std::to_string(width - 1)},
                   {"inner_height", std::to_string(height - 1)},
                   {"first", std::to_string(block.ports.front().found->port.port)},
                   {"last", std::to_string(block.ports.back().found->port.port)},
                   {"ports", list(block.ports, port_data)}});
}

static data legend(const std::vector<port_finding> &ports)
{
    data entries{data::type::list};
    for (const look &shown : looks)
        if (const auto count = std::ranges::count(ports, shown.judged, &port_finding::judged); count > 0)
            entries.push_back(object({{"style", shown.style},
                                      {"mark", shown.mark},
                                      {"meaning", shown.meaning},
                                      {"count", std::to_string(count)}}));
    return entries;
}

static void add_panel(data &page, const journal::run_record &run)
{
    const std::vector<port_finding> ports = ports_of(run);
    page.set("has_panel", !ports.empty());
    page.set("is_judged", run.result == journal::run_result::pass || run.result == journal::run_result::fail);
    page.set("port_count", counted(ports.size(), "port"));
    page.set("legend", legend(ports));
    page.set("groups", list(lay_out(ports), [](const panel_group &group) {
                 return object({{"group", group.name}, {"blocks", list(group.blocks, block_data)}});
             }));
}

static data cell_data(const journal::observation *made, const table_column &column)
{
    members cell{{"is_value", !column.is_check}, {"said", "none"}, {"shown", "–"}};
    if (made != nullptr && column.is_check) {
        cell.emplace_back("said", look_of(made->judged).style);
        cell.emplace_back("shown", word_of(made->judged));
    } else if (made != nullptr) {
        const std::string limits = column.limits.empty() ? limits_text(made->limits) : "";
        cell.emplace_back("shown", made->value + (made->unit.empty() ? "" : " " + made->unit) +
                                       (limits.empty() ? "" : " (" + limits + ")"));
    }
    return object(cell);
}

static data row_data(const table_row &row, const std::vector<table_column> &columns)
{
    data cells{data::type::list};
    for (size_t i = 0; i < columns.size(); i++)
        cells.push_back(cell_data(row.cells[i], columns[i]));
    return object({{"where", row.where.name},
                   {"bad", is_bad(row.judged)},
                   {"style", look_of(row.judged).style},
                   {"word", row.judged == verdict::none ? "–" : word_of(row.judged)},
                   {"cells", cells},
                   {"reason", row.reason}});
}

static data column_data(const table_column &column)
{
    return object({{"column", column.name},
                   {"is_value", !column.is_check},
                   {"limits", column.limits},
                   {"has_limits", !column.limits.empty()}});
}

static std::string meta_of(const journal::attempt &tried)
{
    std::string text = tried.request.empty() ? "" : fmt::format("Request {}. ", tried.request);
    text += fmt::format("Started {}", or_dash(time_text(tried.start)));
    if (const auto took = seconds_between(tried.start, tried.end))
        text += ", took " + duration_text(took);
    return text + ".";
}

static std::string summary_of(const journal::attempt &tried)
{
    std::string text = tried.summary;
    for (const journal::fault &wrong : tried.errors)
        if (wrong.message != tried.summary)
            text += (text.empty() ? "" : "\n") + wrong.symptom + ": " + wrong.message;
    return text;
}

static data step_data(const journal::attempt &tried)
{
    const step_table table = table_of(tried);
    return object({{"step", tried.step},
                   {"request", tried.request},
                   {"attempt", fmt::format("{} of {}", tried.number, std::max(tried.number, tried.most))},
                   {"style", look_of(tried.judged).style},
                   {"word", word_of(tried.judged)},
                   {"bad", is_bad(tried.judged)},
                   {"took", duration_text(seconds_between(tried.start, tried.end))},
                   {"expected", tried.expected_s > 0 ? duration_text(tried.expected_s) : "–"},
                   {"summary", summary_of(tried)},
                   {"meta", meta_of(tried)},
                   {"notes", list(tried.notes,
                                  [](const std::string &note) {
                                      return object({{"note", note}});
                                  })},
                   {"has_rows", !table.rows.empty()},
                   {"columns", list(table.columns, column_data)},
                   {"rows", list(table.rows, [&](const table_row &row) { return row_data(row, table.columns); })}});
}

static data page_of(const journal::run_record &run)
{
    const std::vector<finding> failures = failures_of(run), faults = faults_of(run);
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
                        {"has_steps", !run.attempts.empty()},
                        {"steps", list(run.attempts, step_data)},
                        {"footer", run.plan_file.empty() ? "" : "Plan file " + run.plan_file}});
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
