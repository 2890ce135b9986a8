/* SPDX-License-Identifier: MIT
 *
 * What the program does with journals that are there already.
 */
#include "report_tools.h"

#include <cstdio>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <system_error>

#include "findings.h"
#include "journal/journal_check.h"
#include "journal/journal_text.h"
#include "reports.h"
#include "text/error_json.h"
#include "text/printable.h"
#include "text/say.h"

namespace reports
{

using nlohmann::ordered_json;

constexpr int passed = 0, invalid = 1, unreadable = 2, not_saved = 4, nothing_run = 5;

static void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/* Says on stderr what went wrong, after what was printed. */
static int fail(const char *tool, int code, const std::string &sentence)
{
    std::fflush(stdout);
    text::say(fmt::format("facmsg-station: {}: {}", tool, sentence));
    return code;
}

static int refuse(const char *tool, form wanted, const std::string &sentence)
{
    if (wanted == form::json)
        print(text::error_json(unreadable, sentence));
    return fail(tool, unreadable, sentence);
}

int report_tool(const std::filesystem::path &run_dir, form wanted)
try {
    const journal::run_record run = journal::read_run(run_dir);
    const bool coloured = wanted == form::coloured;
    try {
        write_reports(run_dir, run);
    } catch (const std::system_error &why) {
        print(wanted == form::json ? run_json(run, run_dir, why.what()) : unsaved_text(run_dir));
        return fail("report", not_saved, why.what());
    }
    print(wanted == form::json ? run_json(run, run_dir) : verdict_text(run, run_dir, coloured));
    return exit_code_of(run);
} catch (const journal::no_journal &why) {
    return refuse("report", wanted, why.what());
}

static std::string check_json(const std::string &file, const journal::check_outcome &found, int code)
{
    ordered_json object{{"valid", found.problems.empty()},
                        {"exit_code", code},
                        {"file", file},
                        {"lines", found.lines},
                        {"problems", ordered_json::array()}};
    for (const journal::problem &one : found.problems)
        object["problems"].push_back({{"line", one.line}, {"sentence", text::printable(one.sentence)}});
    return object.dump(2) + "\n";
}

static std::string check_text(const std::string &file, const journal::check_outcome &found)
{
    const std::string name = text::escaped(file);
    std::string text = found.problems.empty() ? fmt::format("{}: {}, valid\n", name, counted(found.lines, "line")) : "";
    for (const journal::problem &one : found.problems)
        text += fmt::format("{}:{}: {}\n", name, one.line, text::escaped(one.sentence));
    return text;
}

int check_tool(const std::filesystem::path &file, form wanted)
try {
    const journal::check_outcome found = journal::check_journal(journal::read_text(file));
    const std::string name = text::printable(file.string());
    const int code = found.problems.empty() ? passed : invalid;
    print(wanted == form::json ? check_json(name, found, code) : check_text(name, found));
    return code;
} catch (const std::system_error &why) {
    return refuse("check", wanted, why.what());
}

int history_tool(const std::filesystem::path &dir, const history_filter &filter, bool list_runs, form wanted)
try {
    const history runs = read_history(dir, filter);
    if (wanted == form::json)
        print(history_json(runs));
    else
        print((list_runs ? runs_text(runs) : "") + history_text(runs));
    return runs.listed.empty() ? nothing_run : passed;
} catch (const std::filesystem::filesystem_error &why) {
    return refuse("history", wanted, fmt::format("{}: {}", why.path1().string(), why.code().message()));
}

} // namespace reports
