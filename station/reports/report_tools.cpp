/* SPDX-License-Identifier: MIT
 *
 * What the program does with journals that are there already.
 */
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <system_error>
#include <unistd.h>

#include "common/file.h"
#include "common/terminal.h"
#include "common/text.h"
#include "history.h"
#include "report_parts.h"
#include "reports.h"
#include "station/journal/journal_text.h"

namespace reports
{

using common::exit_code;
using common::print;
using nlohmann::ordered_json;

[[noreturn]] static void give_up(const std::filesystem::path &file)
{
    throw std::system_error(errno, std::generic_category(), "cannot write " + file.string());
}

/* A file that is open until this ends. */
struct open_file {
    const std::filesystem::path path;
    int fd;

    open_file(const std::filesystem::path &file, int flags)
        : path(file), fd(open(file.c_str(), flags | O_CLOEXEC, 0644))
    {
        if (fd < 0)
            give_up(path);
    }
    ~open_file()
    {
        if (fd >= 0)
            ::close(fd);
    }
    open_file(const open_file &) = delete;
    open_file &operator=(const open_file &) = delete;

    void write(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t written = ::write(fd, text.data(), text.size());
            if (written < 0 && errno != EINTR)
                give_up(path);
            text.remove_prefix(written < 0 ? 0 : static_cast<size_t>(written));
        }
    }
    void sync() const
    {
        if (fsync(fd) != 0)
            give_up(path);
    }
    void close()
    {
        const int old_fd = fd;
        fd = -1;
        if (::close(old_fd) != 0)
            give_up(path);
    }
};

static void write_whole(const std::filesystem::path &file, const std::string &text)
{
    const std::filesystem::path unfinished = file.string() + ".unfinished";
    try {
        open_file draft(unfinished, O_WRONLY | O_CREAT | O_TRUNC);
        draft.write(text);
        draft.sync();
        draft.close();
        if (rename(unfinished.c_str(), file.c_str()) != 0)
            give_up(file);
    } catch (...) {
        unlink(unfinished.c_str());
        throw;
    }
}

void write_reports(const std::filesystem::path &run_dir, const journal::run_record &run)
{
    write_whole(run_dir / "junit.xml", junit_text(run));
    write_whole(run_dir / "results.csv", csv_text(run));
    write_whole(run_dir / "report.html", html_text(run));
    open_file(run_dir, O_RDONLY | O_DIRECTORY).sync();
}

/* Says on stderr what went wrong, after what was printed. */
static exit_code fail(const char *tool, exit_code code, const std::string &sentence)
{
    std::fflush(stdout);
    common::say(fmt::format("facmsg-station: {}: {}", tool, sentence));
    return code;
}

static exit_code refuse(const char *tool, form output, const std::string &sentence)
{
    if (output == form::json)
        print(common::error_json(exit_code::usage, sentence));
    return fail(tool, exit_code::usage, sentence);
}

exit_code report_tool(const std::filesystem::path &run_dir, form output)
try {
    const journal::run_record run = journal::read_run(run_dir);
    const bool coloured = output == form::coloured;
    try {
        write_reports(run_dir, run);
    } catch (const std::system_error &why) {
        print(output == form::json ? run_json(run, run_dir, why.what()) : unsaved_text(run_dir));
        return fail("report", exit_code::not_saved, why.what());
    }
    print(output == form::json ? run_json(run, run_dir)
                               : verdict_text(run, run_dir, coloured, common::stdout_columns()));
    return exit_code_of(run);
} catch (const journal::no_journal &why) {
    return refuse("report", output, why.what());
}

static std::string check_json(const std::string &file, const journal::check_outcome &outcome, exit_code code)
{
    ordered_json object{{"valid", outcome.problems.empty()},
                        {"exit_code", static_cast<int>(code)},
                        {"file", file},
                        {"lines", outcome.lines},
                        {"problems", ordered_json::array()}};
    for (const journal::problem &one : outcome.problems)
        object["problems"].push_back({{"line", one.line}, {"sentence", common::printable(one.sentence)}});
    return object.dump(2) + "\n";
}

static std::string check_text(const std::string &file, const journal::check_outcome &outcome)
{
    const std::string name = common::escaped(file);
    std::string text =
        outcome.problems.empty() ? fmt::format("{}: {}, valid\n", name, counted(outcome.lines, "line")) : "";
    for (const journal::problem &one : outcome.problems)
        text += fmt::format("{}:{}: {}\n", name, one.line, common::escaped(one.sentence));
    return text;
}

exit_code check_tool(const std::filesystem::path &file, form output)
try {
    const journal::check_outcome outcome = journal::check_journal(journal::read_text(file));
    const std::string name = common::printable(file.string());
    const exit_code code = outcome.problems.empty() ? exit_code::passed : exit_code::failed;
    print(output == form::json ? check_json(name, outcome, code) : check_text(name, outcome));
    return code;
} catch (const journal::unreadable_file &why) {
    return refuse("check", output, why.what());
}

exit_code history_tool(const std::filesystem::path &dir, const history_filter &filter, bool list_runs, form output)
try {
    const history runs = read_history(dir, filter);
    if (output == form::json)
        print(history_json(runs));
    else
        print((list_runs ? runs_text(runs) : "") + history_text(runs, common::stdout_columns()));
    return runs.list.empty() ? exit_code::nothing_run : exit_code::passed;
} catch (const std::filesystem::filesystem_error &why) {
    return refuse("history", output,
                  fmt::format("{}: {}", why.path1().string(), common::path_fault(why.code().value(), "directory")));
}

} // namespace reports
