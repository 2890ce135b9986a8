/* SPDX-License-Identifier: MIT
 *
 * The run for spreadsheets: one row for each value and each judgement. Quoted as RFC 4180 says.
 */
#include <algorithm>
#include <fmt/format.h>

#include "report_parts.h"
#include "reports.h"

namespace reports
{

static bool is_number(const std::string &text)
{
    const size_t sign = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    const bool digits = std::all_of(text.begin() + static_cast<std::ptrdiff_t>(sign), text.end(),
                                    [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    return digits && text.size() > sign && std::ranges::count(text, '.') <= 1;
}

/* A text that a spreadsheet would take for a formula gets an apostrophe, by which it stays text. */
static std::string disarmed(const std::string &text)
{
    constexpr std::string_view formula_starts = "=+-@\t\n";
    const bool is_formula = !text.empty() && formula_starts.find(text[0]) != std::string_view::npos && !is_number(text);
    return is_formula ? "'" + text : text;
}

static std::string quoted(const std::string &text)
{
    if (text.find_first_of(",\"\n\r") == std::string::npos)
        return text;
    std::string field = "\"";
    for (const char letter : text)
        field += letter == '"' ? "\"\"" : std::string(1, letter);
    return field + '"';
}

static std::string row_text(const std::vector<std::string> &fields)
{
    std::string row;
    for (const std::string &field : fields)
        row += quoted(field) + ",";
    row.back() = '\r';
    return row + "\n";
}

static std::string observation_row(const journal::run_record &run, const journal::attempt &tried,
                                   const common::check &made)
{
    const bool is_diagnosis = !is_measurement(made);
    return row_text({disarmed(run.serial), disarmed(run.run_id), disarmed(tried.step), std::to_string(tried.number),
                     disarmed(made.where.port > 0 ? std::to_string(made.where.port) : made.where.name),
                     is_diagnosis ? "diagnosis" : "measurement", disarmed(made.name),
                     made.value.is_number() ? made.value.text() : disarmed(made.value.text()), disarmed(made.unit),
                     disarmed(limits_text(made.limits)), is_diagnosis ? word_of(made.verdict) : "",
                     disarmed(made.sentence), made.time});
}

/* The judgement on the step as a whole, in the form of its checks. */
static common::check whole_of(const journal::attempt &tried)
{
    return {.name = "step",
            .verdict = tried.verdict,
            .sentence = tried.summary,
            .where = common::whole_unit(),
            .time = tried.end.text};
}

std::string csv_text(const journal::run_record &run)
{
    std::string text = row_text({"serial", "run_id", "step", "attempt", "port", "kind", "name", "value", "unit",
                                 "limits", "verdict", "message", "time"});
    for (const journal::attempt &tried : run.attempts) {
        for (const common::check &made : tried.checks)
            text += observation_row(run, tried, made);
        text += observation_row(run, tried, whole_of(tried));
    }
    return text;
}

} // namespace reports
