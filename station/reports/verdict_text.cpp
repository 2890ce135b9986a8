/* SPDX-License-Identifier: MIT
 *
 * The verdict for the operator: fits the columns given, and says in words what it says in colour.
 */
#include <algorithm>
#include <fmt/format.h>
#include <sstream>

#include "common/terminal.h"
#include "common/text.h"
#include "report_parts.h"
#include "reports.h"

namespace reports
{

constexpr size_t HEIGHT = 5;

struct letter {
    char name;
    std::string_view lines[HEIGHT];
};
constexpr letter LETTERS[] = {
    {'A', {" ### ", "#   #", "#####", "#   #", "#   #"}}, {'C', {" ####", "#    ", "#    ", "#    ", " ####"}},
    {'D', {"#### ", "#   #", "#   #", "#   #", "#### "}}, {'E', {"#####", "#    ", "###  ", "#    ", "#####"}},
    {'F', {"#####", "#    ", "###  ", "#    ", "#    "}}, {'G', {" ####", "#    ", "#  ##", "#   #", " ####"}},
    {'J', {"  ###", "   # ", "   # ", "#  # ", " ##  "}}, {'U', {"#   #", "#   #", "#   #", "#   #", " ### "}},
    {'V', {"#   #", "#   #", "#   #", " # # ", "  #  "}}, {'I', {"#####", "  #  ", "  #  ", "  #  ", "#####"}},
    {'K', {"#   #", "#  # ", "###  ", "#  # ", "#   #"}}, {'L', {"#    ", "#    ", "#    ", "#    ", "#####"}},
    {'M', {"#   #", "## ##", "# # #", "#   #", "#   #"}}, {'N', {"#   #", "##  #", "# # #", "#  ##", "#   #"}},
    {'O', {" ### ", "#   #", "#   #", "#   #", " ### "}}, {'P', {"#### ", "#   #", "#### ", "#    ", "#    "}},
    {'R', {"#### ", "#   #", "#### ", "#  # ", "#   #"}}, {'S', {" ####", "#    ", " ### ", "    #", "#### "}},
    {'T', {"#####", "  #  ", "  #  ", "  #  ", "  #  "}},
};

/* The word in letters five lines high, each line with its line end, indented by two. Knows the letters of the words
 * for results; others are blank. */
static std::string banner(std::string_view word)
{
    std::string text;
    for (size_t line = 0; line < HEIGHT; line++) {
        std::string strip;
        for (const char name : word) {
            const auto *drawing = std::ranges::find(LETTERS, name, &letter::name);
            strip += "  ";
            strip += drawing == std::end(LETTERS) ? std::string_view("     ") : drawing->lines[line];
        }
        strip.erase(strip.find_last_not_of(' ') + 1);
        text += strip + "\n";
    }
    return text;
}

using common::run_result;
using common::verdict;

static std::string coloured(run_result result, const std::string &text, bool colour)
{
    const char *code = result == run_result::pass ? "1;32" : result == run_result::fail ? "1;31" : "1;33";
    return colour ? fmt::format("\033[{}m{}\033[0m", code, text) : text;
}

static std::string joined_if_known(const std::vector<std::pair<const char *, std::string>> &parts)
{
    std::string text;
    for (const auto &[name, value] : parts)
        if (!value.empty() && value != "-")
            text += fmt::format("{}{}{}", text.empty() ? "" : ", ", name, value);
    return text;
}

/* Nothing when it does not fit. */
static std::string fitting_banner(const std::string &word, size_t columns)
{
    std::string text = banner(word);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.size() > columns)
            return "";
    return text;
}

static std::string head_text(const journal::run_record &run, bool colour, size_t columns)
{
    const std::string word = word_of(run.result);
    const size_t indent = word.size() + 2;
    const std::string unit = joined_if_known({{"serial ", run.serial}, {"", run.product}});
    const std::string done = joined_if_known({{"plan ", run.plan + (run.version.empty() ? "" : " " + run.version)},
                                              {"", duration_text(seconds_between(run.start, run.end))},
                                              {"operator ", run.operator_name},
                                              {"station ", run.station}});
    const std::string large = fitting_banner(word, columns);
    std::string text = "\n" + (large.empty() ? "" : coloured(run.result, large, colour) + "\n") +
                       coloured(run.result, word, colour) + "  " +
                       common::wrapped(unit.empty() ? "serial unknown" : unit, indent, columns) + "\n";
    for (const std::string &line : {shortfall_text(run), done})
        if (!line.empty())
            text += std::string(indent, ' ') + common::wrapped(line, indent, columns) + "\n";
    return text;
}

/* Rows of a heading and a sentence beside it, or below it when the heading is long. */
struct row {
    std::string heading, sentence;
};

static std::string rows_text(const char *title, const std::vector<row> &rows, size_t columns)
{
    const size_t most_heading = std::min<size_t>(22, columns / 4);
    if (rows.empty())
        return "";
    size_t widest = 0;
    for (const row &one : rows)
        widest = std::max(widest, common::length(one.heading));
    const size_t indent = std::min(widest, most_heading) + 4;
    std::string text = fmt::format("\n{}\n", title);
    for (const row &one : rows) {
        const bool below = common::length(one.heading) > most_heading;
        text += "  " + (below ? common::wrapped(one.heading, 2, columns) + "\n" + std::string(indent, ' ')
                              : common::padded(one.heading, indent - 2));
        text += common::wrapped(one.sentence, indent, columns) + "\n";
    }
    return text;
}

static std::vector<row> failure_rows(const journal::run_record &run)
{
    std::vector<row> rows;
    for (const finding &one : failures_of(run))
        rows.push_back({one.check.where.name, fmt::format("{}, {}: {}", one.step, one.check.name, one.check.sentence)});
    if (rows.empty() && run.result == run_result::fail)
        rows.push_back({"unit", UNEXPLAINED_FAILURE});
    return rows;
}

static std::vector<row> fault_rows(const journal::run_record &run)
{
    std::vector<row> rows;
    for (const finding &one : faults_of(run))
        rows.push_back(
            {one.step.empty() ? "run" : one.step, fmt::format("{}: {}", one.check.name, one.check.sentence)});
    return rows;
}

/* Of each step the attempts with a verdict that does not show elsewhere. */
static std::vector<row> step_rows(const journal::run_record &run, bool (*belongs)(const journal::attempt &))
{
    std::vector<row> rows;
    for (const journal::attempt &step : run.attempts)
        if (step.is_last && belongs(step))
            rows.push_back({step.step, step.verdict == verdict::pass
                                           ? fmt::format("passed in attempt {} of {}", step.number, step.most)
                                           : step.summary});
    return rows;
}

std::string verdict_text(const journal::run_record &run, const std::filesystem::path &run_dir, bool colour,
                         size_t columns)
{
    const auto is_not_run = [](const journal::attempt &step) { return step.verdict == verdict::not_run; };
    const auto is_unfinished = [](const journal::attempt &step) { return step.verdict == verdict::incomplete; };
    return head_text(run, colour, columns) + rows_text("What failed:", failure_rows(run), columns) +
           rows_text("What the station could not do:", fault_rows(run), columns) +
           rows_text("Steps that passed only when tried again:", step_rows(run, journal::passed_by_retry), columns) +
           rows_text("Steps that were not run or not finished:", step_rows(run, is_not_run), columns) +
           rows_text("Steps that were cut off:", step_rows(run, is_unfinished), columns) +
           "\nReport: " + common::escaped(common::printable((run_dir / "report.html").string())) + "\n";
}

std::string unsaved_text(const std::filesystem::path &run_dir)
{
    return fmt::format("RESULTS NOT SAVED  the journal of the run is kept, its reports are not; once there is room for "
                       "them:\n  facmsg-station report '{}'\n",
                       common::escaped(common::printable(run_dir.string())));
}

} // namespace reports
