/* SPDX-License-Identifier: MIT
 *
 * facmsg-station: what a production engineer runs. One request of the command table, sent to the test service of the
 * switch's host process and judged. Results go to stdout, errors and progress to stderr.
 */
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <iostream>
#include <system_error>
#include <unistd.h>

#include "command_line.h"
#include "exchange.h"
#include "report.h"
#include "text/say.h"
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

static std::vector<uint8_t> send_and_wait(const invocation &call, const request &sent,
                                          const std::function<void()> &tick)
{
    request answered = sent;
    const exchange_end end = exchange(answered, tick);
    if (end == exchange_end::interrupted)
        throw no_reply(exit_code::interrupted, "interrupted; the service goes on with the request it has begun");
    if (end == exchange_end::failed)
        throw no_reply(exit_code::no_verdict, why_no_reply(sent, call.chosen.directory));
    return answered.payload;
}

/* The client call takes any reply of the right size, so one that belongs to another request shows here: the service
 * sends back what was asked. */
static void check_echo(const command &row, const request &sent, const std::vector<uint8_t> &reply)
{
    for (const option &field : row.options) {
        if (!is_payload_word(field))
            continue;
        const uint32_t asked = word_at(sent.payload, field.offset);
        const uint32_t found = word_at(reply, field.offset);
        if (found != asked)
            throw no_reply(exit_code::no_verdict,
                           fmt::format("the reply does not belong to this request: its {} word is {}; expected {}",
                                       field.name, found, asked));
    }
}

static outcome carry_out(const invocation &call)
{
    const progress_line progress(call);
    const sender send = [&](const request &part, const std::string &done) {
        std::vector<uint8_t> reply = send_and_wait(call, part, [&] { progress.show(done); });
        check_echo(*call.row, part, reply);
        return reply;
    };
    return call.row->transfer ? call.row->transfer(call.sent, send) : call.row->decode(call.sent, send(call.sent, ""));
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
        throw no_reply(exit_code::no_verdict, "not confirmed; nothing was sent");
}

static bool colour_wanted()
{
    const char *no_colour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && (no_colour == nullptr || *no_colour == '\0');
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
    print(call.chosen.json ? json_report(*call.row, call.sent, unit) : text_report(unit, colour_wanted()));
    if (unit.judged == verdict::none)
        text::say(fmt::format("facmsg-station: {}: {}", call.row->name, unit.summary));
    return exit_code_of(unit.judged);
}

static exit_code report_error(const command *row, bool json, exit_code code, const std::string &sentence)
{
    if (json)
        print(json_error(row, code, sentence));
    text::say(fmt::format("facmsg-station: {}{}{}", row ? row->name : "", row ? ": " : "", sentence));
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
    text::say("facmsg-station: the result could not be written to stdout");
    return static_cast<int>(station::exit_code::no_verdict);
}
