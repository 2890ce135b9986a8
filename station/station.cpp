/* SPDX-License-Identifier: MIT
 *
 * facmsg-station: what a production engineer runs. One request of the command table, sent to the test service of the
 * switch's host process and judged, or one of the tools. Results go to stdout, errors and progress to stderr.
 */
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <iostream>
#include <unistd.h>

#include "carry_out.h"
#include "command_line.h"
#include "interruption.h"
#include "report.h"
#include "text/say.h"
#include "text/toml_reader.h"

namespace station
{

static void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

static void say_error(const std::string &subcommand, const std::string &sentence)
{
    text::say(fmt::format("facmsg-station: {}{}{}", subcommand, subcommand.empty() ? "" : ": ", sentence));
}

/* The progress line, for as long as this lives. */
struct progress_line {
    const invocation &call;
    const bool wanted = !call.chosen.no_progress && isatty(STDERR_FILENO);
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

    explicit progress_line(const invocation &shown) : call(shown) {}
    ~progress_line()
    {
        if (wanted)
            clear_progress();
    }
    progress_line(const progress_line &) = delete;
    progress_line &operator=(const progress_line &) = delete;
    void show(const std::string &done) const
    {
        const auto elapsed = std::chrono::steady_clock::now() - start;
        if (wanted)
            show_progress(*call.row, static_cast<int>(elapsed / std::chrono::seconds(1)), done);
    }
};

static outcome carry_out(const invocation &call)
{
    const progress_line progress(call);
    watch_signals(signal_policy::note);
    return carry_out(*call.row, call.sent, call.chosen.directory, {},
                     [&](const std::string &done) { progress.show(done); });
}

/* Asks before a request that is not to be sent by mistake. */
static void confirm(const invocation &call)
{
    if (call.row->question == nullptr || own_value(call.sent, "--yes"))
        return;
    if (!isatty(STDIN_FILENO))
        throw usage_error(fmt::format("--yes: needed for {} when nobody can be asked", call.row->name));
    std::fputs(fmt::format("{} [y/N] ", call.row->question).c_str(), stderr);
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "yes")
        throw no_reply(exit_code::no_verdict, "no-verdict", "not confirmed; nothing was sent");
}

static exit_code run(const invocation &call)
{
    if (call.row->decode == nullptr && call.row->transfer == nullptr) {
        print(list_report(call.chosen.json));
        return exit_code::passed;
    }
    confirm(call);
    enter_directory(call.chosen.directory);
    const outcome unit = carry_out(call);
    print(call.chosen.json ? json_report(*call.row, call.sent, unit) : text_report(unit, text::colour_wanted()));
    if (unit.judged == verdict::none)
        say_error(call.row->name, unit.summary);
    return exit_code_of(unit.judged);
}

static std::string name_of(const invocation &call)
{
    return call.row != nullptr ? call.row->name : call.tool_name != nullptr ? call.tool_name : "";
}

static exit_code report_error(const invocation &call, exit_code code, const std::string &sentence)
{
    if (call.chosen.json)
        print(json_error(call.row, code, sentence));
    say_error(name_of(call), sentence);
    return code;
}

/* The command line may not have been read so far as --json. */
static exit_code report_usage(int argc, char **argv, const std::string &subcommand, const std::string &sentence)
{
    if (std::find(argv, argv + argc, std::string_view("--json")) != argv + argc)
        print(json_error(nullptr, exit_code::usage, sentence));
    say_error(subcommand, sentence);
    return exit_code::usage;
}

static exit_code run_command_line(int argc, char **argv)
{
    invocation call{};
    try {
        call = read_command_line(argc, argv);
        if (!call.help.empty()) {
            print(call.help);
            return exit_code::passed;
        }
        return call.tool_name != nullptr ? call.run(call.chosen) : run(call);
    } catch (const usage_error &error) {
        return report_usage(argc, argv, error.subcommand.empty() ? name_of(call) : error.subcommand, error.what());
    } catch (const text::file_error &error) {
        return report_usage(argc, argv, name_of(call), error.what());
    } catch (const no_reply &error) {
        return report_error(call, error.code, error.what());
    } catch (const std::exception &error) {
        return report_error(call, exit_code::no_verdict, error.what());
    }
}

} // namespace station

/* A file of the program's own must not get the number of a standard stream that the caller closed. */
static void open_standard_streams()
{
    int fd;
    while ((fd = open("/dev/null", O_RDONLY)) >= 0 && fd <= STDERR_FILENO)
        ;
    if (fd >= 0)
        close(fd);
}

int main(int argc, char **argv)
{
    open_standard_streams();
    const station::exit_code code = station::run_command_line(argc, argv);
    if (std::fflush(stdout) == 0)
        return static_cast<int>(code);
    text::say("facmsg-station: the result could not be written to stdout");
    return static_cast<int>(station::exit_code::no_verdict);
}
