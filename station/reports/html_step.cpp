/* SPDX-License-Identifier: MIT
 *
 * An attempt at a step on the page: what it came to, the values of the whole unit, and a table of its ports: a row for
 * each port, a column for each check and each value.
 */
#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>

#include "page_data.h"
#include "report_parts.h"

namespace reports
{

using common::check;
using common::verdict;

struct table_column {
    std::string name;
    bool is_check;
    std::string limits; /* when they are the same for all rows */
};

struct table_row {
    common::place where;
    std::vector<const common::check *> cells; /* one for each column; null: nothing there */
    common::verdict verdict = common::verdict::none;
    std::string reason = {};
};

/* Points into the attempt. */
struct step_table {
    std::vector<const common::check *> unit = {};
    std::vector<table_column> columns = {};
    std::vector<table_row> rows = {};
};

static bool is_of_unit(const check &entry)
{
    return entry.where.id == "unit";
}

/* What the journal says of one port without a break. */
using passage = std::vector<const check *>;

static bool is_same(const check &one, const check &other)
{
    return is_measurement(one) == is_measurement(other) && one.name == other.name;
}

static bool holds(const passage &row, const check &entry)
{
    return std::ranges::any_of(row, [&](const check *previous) { return is_same(*previous, entry); });
}

static std::vector<passage> passages_of(const journal::attempt &step)
{
    std::vector<passage> passages;
    for (const check &entry : step.checks) {
        if (is_of_unit(entry))
            continue;
        if (passages.empty() || passages.back().front()->where.id != entry.where.id || holds(passages.back(), entry))
            passages.emplace_back();
        passages.back().push_back(&entry);
    }
    return passages;
}

/* Passages on the same port are one row, unless they say the same things twice: a port may be tested in two ways. */
static std::vector<passage> rows_of(const journal::attempt &step)
{
    std::vector<passage> rows;
    std::multimap<std::string, size_t> by_place;
    for (const passage &part : passages_of(step)) {
        const std::string &id = part.front()->where.id;
        const auto [begin, end] = by_place.equal_range(id);
        const auto fits = std::find_if(begin, end, [&](const auto &previous) {
            return std::ranges::none_of(part, [&](const check *entry) { return holds(rows[previous.second], *entry); });
        });
        if (fits == end) {
            by_place.emplace(id, rows.size());
            rows.push_back(part);
        } else {
            rows[fits->second].insert(rows[fits->second].end(), part.begin(), part.end());
        }
    }
    return rows;
}

/* Checks before values, otherwise as they appear. */
static std::vector<table_column> columns_of(const journal::attempt &step)
{
    std::vector<table_column> columns;
    std::set<std::pair<bool, std::string>> names;
    for (const check &entry : step.checks) {
        const bool is_check = !is_measurement(entry);
        if (!is_of_unit(entry) && names.emplace(is_check, entry.name).second)
            columns.push_back({entry.name, is_check, limits_with_unit(entry)});
    }
    std::ranges::stable_sort(columns, std::ranges::greater{}, &table_column::is_check);
    return columns;
}

static bool belongs(const check &entry, const table_column &column)
{
    return !is_measurement(entry) == column.is_check && entry.name == column.name;
}

static table_row row_of(const passage &part, const std::vector<table_column> &columns)
{
    table_row row{part.front()->where, std::vector<const check *>(columns.size(), nullptr)};
    for (const check *entry : part) {
        const auto column =
            std::ranges::find_if(columns, [&](const table_column &one) { return belongs(*entry, one); });
        row.cells[static_cast<size_t>(column - columns.begin())] = entry;
        row.verdict = journal::prevailing(row.verdict, entry->verdict);
        if (!entry->sentence.empty())
            row.reason += (row.reason.empty() ? "" : " ") + entry->sentence;
    }
    return row;
}

static bool have_common_limits(const step_table &table, size_t column)
{
    return std::ranges::all_of(table.rows, [&](const table_row &row) {
        return row.cells[column] == nullptr || limits_with_unit(*row.cells[column]) == table.columns[column].limits;
    });
}

static step_table table_of(const journal::attempt &step)
{
    step_table table{{}, columns_of(step)};
    for (const check &entry : step.checks)
        if (is_of_unit(entry))
            table.unit.push_back(&entry);
    for (const passage &part : rows_of(step))
        table.rows.push_back(row_of(part, table.columns));
    for (size_t i = 0; i < table.columns.size(); i++)
        if (!have_common_limits(table, i))
            table.columns[i].limits.clear();
    return table;
}

static std::string value_text(const check &entry, bool with_limits)
{
    const std::string limits = with_limits ? limits_with_unit(entry) : "";
    return entry.value.text() + (entry.unit.empty() ? "" : " " + entry.unit) +
           (limits.empty() ? "" : " (" + limits + ")");
}

static data cell_data(const check *entry, const table_column &column)
{
    members cell{{"label", column.name}, {"is_value", !column.is_check}, {"said", "none"}, {"shown", "–"}};
    if (entry != nullptr && column.is_check) {
        cell.emplace_back("said", style_of(entry->verdict));
        cell.emplace_back("shown", word_of(entry->verdict));
    } else if (entry != nullptr) {
        cell.emplace_back("shown", value_text(*entry, column.limits.empty()));
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
static std::vector<const check *> unit_line(const journal::attempt &step, const step_table &table)
{
    std::vector<const check *> line = table.unit;
    if (step.verdict == verdict::fail)
        std::erase_if(line, [](const check *entry) { return entry->verdict == verdict::pass; });
    return line;
}

/* "coverage PASS", "running_version 3 (>= 1)". */
static data unit_data(const check *entry)
{
    const bool is_check = !is_measurement(*entry);
    return object({{"name", entry->name},
                   {"said", is_check ? style_of(entry->verdict) : "none"},
                   {"shown", is_check ? word_of(entry->verdict) : value_text(*entry, true)},
                   {"reason", entry->sentence.empty() ? "" : ": " + entry->sentence}});
}

static std::string meta_of(const journal::attempt &step)
{
    std::string text = step.request.empty() ? "" : fmt::format("Request {}. ", step.request);
    text += fmt::format("Started {}", or_dash(time_text(step.start)));
    if (const auto took = time_of(step))
        text += ", took " + duration_text(took);
    return text + ".";
}

static std::string summary_of(const journal::attempt &step)
{
    std::string text = step.summary;
    for (const journal::fault &wrong : step.errors)
        if (wrong.message != step.summary)
            text += (text.empty() ? "" : "\n") + wrong.symptom + ": " + wrong.message;
    return text;
}

/* A note that is the summary already is not told twice. */
static data notes_of(const journal::attempt &step)
{
    data notes{data::type::list};
    for (const std::string &note : step.notes)
        if (note != step.summary)
            notes.push_back(object({{"note", note}}));
    return notes;
}

data step_data(const journal::attempt &step)
{
    const step_table table = table_of(step);
    const std::vector<const check *> unit = unit_line(step, table);
    return object({{"step", step.step},
                   {"request", step.request},
                   {"attempt", fmt::format("{} of {}", step.number, std::max(step.number, step.most))},
                   {"style", style_of(step.verdict)},
                   {"word", word_of(step.verdict)},
                   {"bad", is_bad(step.verdict)},
                   {"took", step.verdict == verdict::not_run ? "–" : duration_text(time_of(step))},
                   {"expected", step.expected_s > 0 ? duration_text(step.expected_s) : "–"},
                   {"summary", summary_of(step)},
                   {"meta", meta_of(step)},
                   {"notes", notes_of(step)},
                   {"has_unit", !unit.empty()},
                   {"unit", list(unit, unit_data)},
                   {"has_rows", !table.rows.empty()},
                   {"columns", list(table.columns, column_data)},
                   {"rows", list(table.rows, [&](const table_row &row) { return row_data(row, table.columns); })}});
}

} // namespace reports
