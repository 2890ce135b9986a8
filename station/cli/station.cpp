/* SPDX-License-Identifier: MIT
 *
 * facmsg-station: what a production engineer runs. One request of the command table, sent to the test service of the
 * switch's host process and judged, or one of the tools. Results go to stdout, errors and progress to stderr.
 */
#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <fmt/format.h>
#include <iostream>
#include <unistd.h>

#include "command_line.h"
#include "common/file.h"
#include "common/terminal.h"
#include "report.h"
#include "station/requests/carry_out.h"
#include "station/requests/interruption.h"
#include "station/requests/notice.h"
#include "station/requests/service_lock.h"

namespace station
{

using common::print;

/* A line of stderr, rewritten in place, for as long as this lives. A terminal that cannot do so gets one plain line. */
class progress
{
  public:
    progress(const command &row, bool visible);
    ~progress();
    progress(const progress &) = delete;
    progress &operator=(const progress &) = delete;

    /* done says how far a transfer is. */
    void working(const std::string &done);
    /* The service is still at work for somebody else. */
    void waiting();
    /* Who else is waited for. */
    notice &others();

  private:
    const command &row_;
    bool plain_;  /* one line, not said yet */
    bool lively_; /* a line that is rewritten */
    bool begun_ = false;
    notice notice_;
    std::chrono::steady_clock::time_point start_ = {};
};

static std::string expectation(const duration &expected)
{
    const std::string longest =
        expected.longest_s > 0 ? fmt::format(", up to {} s if ports fail", expected.longest_s) : "";
    if (expected.typical_s == 0)
        return "expected time unknown";
    return fmt::format("about {} s expected{}", expected.typical_s, longest);
}

progress::progress(const command &row, bool visible) : row_(row), notice_(row.name, visible)
{
    const common::terminal screen = common::terminal_of(STDERR_FILENO);
    lively_ = visible && screen.lively;
    plain_ = visible && screen.there && !screen.lively;
}

progress::~progress()
{
    if (lively_ && begun_)
        common::clear_line(STDERR_FILENO);
}

void progress::working(const std::string &done)
{
    const auto now = std::chrono::steady_clock::now();
    if (!begun_) {
        notice_.clear();
        start_ = now;
    }
    begun_ = true;
    if (plain_)
        common::say(fmt::format("{}: {}", row_.name, expectation(row_.expected)));
    plain_ = false;
    if (lively_)
        common::rewrite_line(STDERR_FILENO,
                             fmt::format("{}: {} s elapsed, {}", row_.name,
                                         std::chrono::duration_cast<std::chrono::seconds>(now - start_).count(),
                                         done.empty() ? expectation(row_.expected) : done));
}

void progress::waiting()
{
    begun_ = false;
    notice_.show(SERVICE_BUSY);
}

notice &progress::others()
{
    return notice_;
}

static milliseconds in_ms(const std::string &seconds)
{
    return std::chrono::seconds(std::stoll(seconds));
}

static void say_error(const std::string &subcommand, const std::string &sentence)
{
    common::say(fmt::format("facmsg-station: {}{}{}", subcommand, subcommand.empty() ? "" : ": ", sentence));
}

static patience patience_for(const request &sent)
{
    patience allowed{};
    if (const auto value = own_value(sent, BUSY_TIMEOUT_OPTION.name))
        allowed.for_service = in_ms(*value);
    if (const auto value = own_value(sent, "--timeout"))
        allowed.for_reply = in_ms(*value);
    return allowed;
}

/* Nothing else is at the service meanwhile. */
static outcome carry_out(const invocation &call)
{
    progress display(*call.row, !call.chosen.no_progress);
    watch_signals(signal_policy::note);
    const service_lock alone({call.chosen.directory, fmt::format("request {}", call.row->name), may_share(*call.row),
                              own_value(call.sent, "--wait").has_value()},
                             display.others());
    return carry_out(*call.row, call.sent, call.chosen.directory, patience_for(call.sent),
                     {[&](const std::string &done) { display.working(done); }, [&] { display.waiting(); }});
}

/* Asks before a request that is not to be sent by mistake. */
static void confirm(const invocation &call)
{
    if (call.row->question == nullptr || own_value(call.sent, "--yes"))
        return;
    if (!isatty(STDIN_FILENO))
        throw usage_error(fmt::format("--yes: needed for {} when nobody can be asked", call.row->name));
    watch_signals(signal_policy::leave);
    std::string answer;
    const open_line line; /* before anybody can see it, and interrupt */
    std::fputs(fmt::format("{} [y/N] ", call.row->question).c_str(), stderr);
    if (!std::getline(std::cin, answer))
        std::fputs("\n", stderr);
    if (answer != "y" && answer != "yes")
        throw no_reply(exit_code::no_verdict, "no-verdict", "not confirmed; nothing was sent");
}

static exit_code run(const invocation &call)
{
    if (call.row->decode == nullptr && call.row->transfer == nullptr) {
        print(call.chosen.json ? list_json() : list_text(common::stdout_columns()));
        return exit_code::passed;
    }
    confirm(call);
    enter_directory(call.chosen.directory);
    const outcome unit = carry_out(call);
    print(call.chosen.json ? json_report(*call.row, call.sent, unit)
                           : text_report(unit, common::colour_wanted(), common::stdout_columns()));
    if (unit.verdict == verdict::no_verdict)
        say_error(call.row->name, unit.summary);
    return exit_code_of(unit.verdict);
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
    } catch (const common::file_error &error) {
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
    const auto code = static_cast<int>(station::run_command_line(argc, argv));
    const bool interrupted = code > 128; /* perhaps by the end of the terminal that stdout leads to */
    if (std::fflush(stdout) == 0 || interrupted)
        return code;
    common::say("facmsg-station: the result could not be written to stdout");
    return static_cast<int>(station::exit_code::no_verdict);
}
