/* SPDX-License-Identifier: MIT
 *
 * facmsg-station: what a production engineer runs. One request of the command table, sent to the test service of the
 * switch's host process and judged. Results go to stdout, errors and progress to stderr.
 */
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "command_line.h"
#include "exchange.h"
#include "report.h"
#include "unreachable.h"

namespace station
{

/* The run ends without a reply that can be judged. */
struct no_reply : std::runtime_error {
    exit_code code;
    no_reply(exit_code why, const std::string &sentence) : std::runtime_error(sentence), code(why) {}
};

static void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

static void enter_directory(const std::string &directory)
{
    if (chdir(directory.c_str()) != 0)
        throw no_reply(exit_code::no_verdict, fmt::format("cannot enter directory '{}': {}", directory,
                                                          std::generic_category().message(errno)));
}

static request send_and_wait(const invocation &call)
{
    const bool progress = !call.chosen.no_progress && isatty(STDERR_FILENO);
    request answered = call.sent;
    const exchange_end end = exchange(answered, [&](int elapsed_s) {
        if (progress)
            show_progress(*call.row, elapsed_s);
    });
    if (progress)
        clear_progress();
    if (end == exchange_end::interrupted)
        throw no_reply(exit_code::interrupted, "interrupted; the service goes on with the request it has begun");
    if (end == exchange_end::failed)
        throw no_reply(exit_code::no_verdict, why_no_reply(call.sent, call.chosen.directory));
    return answered;
}

/* The client call takes any reply of the right size, so one that belongs to another request shows here: the service
 * sends back what was asked. */
static void check_echo(const invocation &call, const std::vector<uint8_t> &reply)
{
    for (const option &field : call.row->options) {
        if (!is_payload_word(field))
            continue;
        const uint32_t asked = word_at(call.sent.payload, field.offset);
        const uint32_t found = word_at(reply, field.offset);
        if (found != asked)
            throw no_reply(exit_code::no_verdict,
                           fmt::format("the reply does not belong to this request: its {} word is {}; expected {}",
                                       field.name, found, asked));
    }
}

static bool colour_wanted()
{
    const char *no_colour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && (no_colour == nullptr || *no_colour == '\0');
}

static exit_code run(const invocation &call)
{
    if (call.row->decode == nullptr) {
        print(list_report(call.chosen.json));
        return exit_code::passed;
    }
    enter_directory(call.chosen.directory);
    const request answered = send_and_wait(call);
    check_echo(call, answered.payload);
    const outcome unit = call.row->decode(call.sent, answered.payload);
    print(call.chosen.json ? json_report(*call.row, call.sent, unit) : text_report(unit, colour_wanted()));
    if (unit.judged == verdict::none)
        fmt::print(stderr, "facmsg-station: {}: {}\n", call.row->name, unit.summary);
    return exit_code_of(unit.judged);
}

static exit_code report_error(const command *row, bool json, exit_code code, const std::string &sentence)
{
    if (json)
        print(json_error(row, code, sentence));
    fmt::print(stderr, "facmsg-station: {}{}{}\n", row ? row->name : "", row ? ": " : "", sentence);
    return code;
}

static exit_code run_command_line(int argc, char **argv)
{
    invocation call{};
    try {
        call = read_command_line(argc, argv);
        if (call.row != nullptr)
            return run(call);
        print(call.help);
        return exit_code::passed;
    } catch (const usage_error &error) {
        const bool json = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
        return report_error(nullptr, json, exit_code::usage, error.what());
    } catch (const no_reply &error) {
        return report_error(call.row, call.chosen.json, error.code, error.what());
    } catch (const std::exception &error) {
        return report_error(call.row, call.chosen.json, exit_code::no_verdict, error.what());
    }
}

} // namespace station

int main(int argc, char **argv)
{
    const station::exit_code code = station::run_command_line(argc, argv);
    if (std::fflush(stdout) == 0)
        return static_cast<int>(code);
    fmt::print(stderr, "facmsg-station: the result could not be written to stdout\n");
    return static_cast<int>(station::exit_code::no_verdict);
}
