/* SPDX-License-Identifier: MIT
 *
 * An attempt at a step on the page: what it came to, the values of the whole unit, and a table of its ports.
 */
#include <algorithm>
#include <fmt/format.h>

#include "findings.h"
#include "page_data.h"
#include "step_table.h"

namespace reports
{

using common::check;
using common::verdict;

static std::string value_text(const check &made, bool with_limits)
{
    const std::string limits = with_limits ? limits_with_unit(made) : "";
    return made.value.text() + (made.unit.empty() ? "" : " " + made.unit) + (limits.empty() ? "" : " (" + limits + ")");
}

static data cell_data(const check *made, const table_column &column)
{
    members cell{{"label", column.name}, {"is_value", !column.is_check}, {"said", "none"}, {"shown", "–"}};
    if (made != nullptr && column.is_check) {
        cell.emplace_back("said", style_of(made->verdict));
        cell.emplace_back("shown", word_of(made->verdict));
    } else if (made != nullptr) {
        cell.emplace_back("shown", value_text(*made, column.limits.empty()));
    }
    return object(cell);
}

static data row_data(const table_row &row, const std::vector<table_column> &columns)
{
    data cells{data::type::list};
    for (size_t i = 0; i < columns.size(); i++)
        cells.push_back(cell_data(row.cells[i], columns[i]));
    return object({{"where", row.where.name},
                   {"bad", is_bad(row.verdict)},
                   {"has_verdict", row.verdict != verdict::none},
                   {"style", style_of(row.verdict)},
                   {"word", word_of(row.verdict)},
                   {"cells", cells},
                   {"has_reason", !row.reason.empty()},
                   {"reason", row.reason},
                   {"span", std::to_string(columns.size() + 1)}});
}

static data column_data(const table_column &column)
{
    return object({{"column", column.name},
                   {"is_value", !column.is_check},
                   {"limits", column.limits},
                   {"has_limits", !column.limits.empty()}});
}

/* What is told of the whole unit. Beside a step that failed no check stands as passed. */
static std::vector<const check *> unit_line(const journal::attempt &tried, const step_table &table)
{
    std::vector<const check *> shown = table.unit;
    if (tried.verdict == verdict::fail)
        std::erase_if(shown, [](const check *made) { return made->verdict == verdict::pass; });
    return shown;
}

/* "coverage PASS", "running_version 3 (>= 1)". */
static data unit_data(const check *made)
{
    const bool is_check = !is_measurement(*made);
    return object({{"name", made->name},
                   {"said", is_check ? style_of(made->verdict) : "none"},
                   {"shown", is_check ? word_of(made->verdict) : value_text(*made, true)},
                   {"reason", made->sentence.empty() ? "" : ": " + made->sentence}});
}

static std::string meta_of(const journal::attempt &tried)
{
    std::string text = tried.request.empty() ? "" : fmt::format("Request {}. ", tried.request);
    text += fmt::format("Started {}", or_dash(time_text(tried.start)));
    if (const auto took = time_of(tried))
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

/* A note that is the summary already is not told twice. */
static data notes_of(const journal::attempt &tried)
{
    data notes{data::type::list};
    for (const std::string &note : tried.notes)
        if (note != tried.summary)
            notes.push_back(object({{"note", note}}));
    return notes;
}

data step_data(const journal::attempt &tried)
{
    const step_table table = table_of(tried);
    const std::vector<const check *> unit = unit_line(tried, table);
    return object({{"step", tried.step},
                   {"request", tried.request},
                   {"attempt", fmt::format("{} of {}", tried.number, std::max(tried.number, tried.most))},
                   {"style", style_of(tried.verdict)},
                   {"word", word_of(tried.verdict)},
                   {"bad", is_bad(tried.verdict)},
                   {"took", tried.verdict == verdict::not_run ? "–" : duration_text(time_of(tried))},
                   {"expected", tried.expected_s > 0 ? duration_text(tried.expected_s) : "–"},
                   {"summary", summary_of(tried)},
                   {"meta", meta_of(tried)},
                   {"notes", notes_of(tried)},
                   {"has_unit", !unit.empty()},
                   {"unit", list(unit, unit_data)},
                   {"has_rows", !table.rows.empty()},
                   {"columns", list(table.columns, column_data)},
                   {"rows", list(table.rows, [&](const table_row &row) { return row_data(row, table.columns); })}});
}

} // namespace reports
