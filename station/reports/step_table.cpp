/* SPDX-License-Identifier: MIT
 *
 * What an attempt at a step found, as a table: a row for each port, a column for each check and each value.
 */
#include "step_table.h"

#include <algorithm>
#include <map>
#include <set>

#include "findings.h"

namespace reports
{

using common::check;

static bool is_of_unit(const check &made)
{
    return made.where.id == "unit";
}

/* What the journal says of one port without a break. */
using passage = std::vector<const check *>;

static bool is_same(const check &one, const check &other)
{
    return is_measurement(one) == is_measurement(other) && one.name == other.name;
}

static bool holds(const passage &row, const check &made)
{
    return std::ranges::any_of(row, [&](const check *known) { return is_same(*known, made); });
}

static std::vector<passage> passages_of(const journal::attempt &tried)
{
    std::vector<passage> passages;
    for (const check &made : tried.checks) {
        if (is_of_unit(made))
            continue;
        if (passages.empty() || passages.back().front()->where.id != made.where.id || holds(passages.back(), made))
            passages.emplace_back();
        passages.back().push_back(&made);
    }
    return passages;
}

/* Passages on the same port are one row, unless they say the same things twice: a port may be tested in two ways. */
static std::vector<passage> rows_of(const journal::attempt &tried)
{
    std::vector<passage> rows;
    std::multimap<std::string, size_t> by_place;
    for (const passage &part : passages_of(tried)) {
        const std::string &id = part.front()->where.id;
        const auto [begin, end] = by_place.equal_range(id);
        const auto fits = std::find_if(begin, end, [&](const auto &known) {
            return std::ranges::none_of(part, [&](const check *made) { return holds(rows[known.second], *made); });
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
static std::vector<table_column> columns_of(const journal::attempt &tried)
{
    std::vector<table_column> columns;
    std::set<std::pair<bool, std::string>> known;
    for (const check &made : tried.checks) {
        const bool is_check = !is_measurement(made);
        if (!is_of_unit(made) && known.emplace(is_check, made.name).second)
            columns.push_back({made.name, is_check, limits_with_unit(made)});
    }
    std::ranges::stable_sort(columns, std::ranges::greater{}, &table_column::is_check);
    return columns;
}

static bool belongs(const check &made, const table_column &column)
{
    return !is_measurement(made) == column.is_check && made.name == column.name;
}

static table_row row_of(const passage &part, const std::vector<table_column> &columns)
{
    table_row row{part.front()->where, std::vector<const check *>(columns.size(), nullptr)};
    for (const check *made : part) {
        const auto column = std::ranges::find_if(columns, [&](const table_column &one) { return belongs(*made, one); });
        row.cells[static_cast<size_t>(column - columns.begin())] = made;
        row.verdict = journal::prevailing(row.verdict, made->verdict);
        if (!made->sentence.empty())
            row.reason += (row.reason.empty() ? "" : " ") + made->sentence;
    }
    return row;
}

static bool have_common_limits(const step_table &table, size_t column)
{
    return std::ranges::all_of(table.rows, [&](const table_row &row) {
        return row.cells[column] == nullptr || limits_with_unit(*row.cells[column]) == table.columns[column].limits;
    });
}

step_table table_of(const journal::attempt &tried)
{
    step_table table{{}, columns_of(tried)};
    for (const check &made : tried.checks)
        if (is_of_unit(made))
            table.unit.push_back(&made);
    for (const passage &part : rows_of(tried))
        table.rows.push_back(row_of(part, table.columns));
    for (size_t i = 0; i < table.columns.size(); i++)
        if (!have_common_limits(table, i))
            table.columns[i].limits.clear();
    return table;
}

} // namespace reports
