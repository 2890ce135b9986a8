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
    constexpr std::string_view FORMULA_STARTS = "=+-@\t\n";
    const bool is_formula = !text.empty() && FORMULA_STARTS.find(text[0]) != std::string_view::npos && !is_number(text);
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

static std::string observation_row(const journal::run_record &run, const journal::attempt &step,
                                   const common::check &entry)
{
    const bool is_diagnosis = !is_measurement(entry);
    return row_text({disarmed(run.serial), disarmed(run.run_id), disarmed(step.step), std::to_string(step.number),
                     disarmed(entry.where.port > 0 ? std::to_string(entry.where.port) : entry.where.name),
                     is_diagnosis ? "diagnosis" : "measurement", disarmed(entry.name),
                     entry.value.is_number() ? entry.value.text() : disarmed(entry.value.text()), disarmed(entry.unit),
                     disarmed(limits_text(entry.limits)), is_diagnosis ? word_of(entry.verdict) : "",
                     disarmed(entry.sentence), entry.time});
}

/* The judgement on the step as a whole, in the form of its checks. */
static common::check whole_of(const journal::attempt &step)
{
    return {.name = "step",
            .verdict = step.verdict,
            .sentence = step.summary,
            .where = common::whole_unit(),
            .time = step.end.text};
}

std::string csv_text(const journal::run_record &run)
{
    std::string text = row_text({"serial", "run_id", "step", "attempt", "port", "kind", "name", "value", "unit",
                                 "limits", "verdict", "message", "time"});
    for (const journal::attempt &step : run.attempts) {
        for (const common::check &entry : step.checks)
            text += observation_row(run, step, entry);
        text += observation_row(run, step, whole_of(step));
    }
    return text;
}

} // namespace reports
