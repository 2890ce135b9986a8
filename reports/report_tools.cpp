/* SPDX-License-Identifier: MIT
 *
 * What the program does with journals that are there already.
 */
#include "report_tools.h"

#include <cstdio>
#include <fmt/format.h>
#include <system_error>

#include "findings.h"
#include "history.h"
#include "journal/journal_check.h"
#include "journal/journal_text.h"
#include "reports.h"
#include "text/printable.h"
#include "text/say.h"

namespace reports
{

constexpr int passed = 0, invalid = 1, unreadable = 2, not_saved = 4, nothing_run = 5;

static void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

int report_tool(const std::filesystem::path &run_dir, bool colour)
try {
    const journal::run_record run = journal::read_run(run_dir);
    try {
        write_reports(run_dir, run);
    } catch (const std::system_error &why) {
        print(verdict_text(run, colour));
        std::fflush(stdout);
        text::say(why.what());
        return not_saved;
    }
    print(verdict_text(run, run_dir, colour));
    return exit_code_of(run);
} catch (const journal::no_journal &why) {
    text::say(why.what());
    return unreadable;
}

int check_tool(const std::filesystem::path &file)
try {
    const journal::check_outcome found = journal::check_journal(journal::read_text(file));
    const std::string name = text::escaped(text::printable(file.string()));
    if (found.problems.empty())
        print(fmt::format("{}: {}, valid\n", name, counted(found.lines, "line")));
    for (const journal::problem &one : found.problems)
        print(fmt::format("{}:{}: {}\n", name, one.line, text::escaped(one.sentence)));
    return found.problems.empty() ? passed : invalid;
} catch (const std::system_error &why) {
    text::say(why.what());
    return unreadable;
}

int history_tool(const std::filesystem::path &dir, bool json)
try {
    const history runs = read_history(dir);
    print(json ? history_json(runs) : history_text(runs));
    return runs.runs == 0 ? nothing_run : passed;
} catch (const std::filesystem::filesystem_error &why) {
    text::say(fmt::format("{}: {}", why.path1().string(), why.code().message()));
    return unreadable;
}

} // namespace reports
