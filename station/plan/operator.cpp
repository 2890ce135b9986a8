/* SPDX-License-Identifier: MIT */
#include "operator.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "common/terminal.h"
#include "common/text.h"
#include "station/requests/carry_out.h"
#include "station/requests/interruption.h"

namespace plan
{

using common::value;
using common::verdict;
using station::outcome;

/* How long a signal may go unseen. */
static constexpr int GLANCE_MS = 100;

bool somebody_there()
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
}

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

static void leave_if_interrupted(const char *sentence)
{
    if (station::noted_signal() != 0)
        throw station::no_reply(station::noted_code(), "interrupted", sentence);
}

/* Until a letter can be read, or the end. */
static void wait_for_input()
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (poll(&input, 1, GLANCE_MS) <= 0) {
        if (station::noted_signal() != 0)
            std::fputs("\n", stderr); /* the question stands alone on its line */
        leave_if_interrupted("the question was not answered: the run was interrupted");
    }
}

static std::optional<std::string> read_line()
{
    std::string line;
    for (;;) {
        char letter = 0;
        wait_for_input();
        const ssize_t size = read(STDIN_FILENO, &letter, 1);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return std::nullopt;
        if (letter == '\n')
            return line;
        line += letter;
    }
}

std::optional<std::string> ask(const std::string &question)
{
    const std::string text =
        common::wrapped(common::printable(question), 0, common::terminal_of(STDERR_FILENO).width - 1);
    tcflush(STDIN_FILENO, TCIFLUSH);
    const station::open_line question_line;
    std::fputs((text + " ").c_str(), stderr);
    std::fflush(stderr);
    const auto line = read_line();
    if (!line)
        std::fputs("\n", stderr);
    return line ? std::optional(trimmed(*line)) : std::nullopt;
}

static void wait(std::chrono::seconds time, const std::function<void()> &tick)
{
    const auto end = std::chrono::steady_clock::now() + time;
    for (auto now = end - time; now < end; now = std::chrono::steady_clock::now()) {
        tick();
        leave_if_interrupted("the pause was cut short: the run was interrupted");
        const auto left_ms = std::chrono::ceil<std::chrono::milliseconds>(end - now).count();
        poll(nullptr, 0, static_cast<int>(std::min<int64_t>(GLANCE_MS, left_ms)));
    }
}

/* A whole text as a number; empty when it is none. */
static value number_of(const std::string &answer)
{
    const char *end = answer.data() + answer.size();
    int64_t whole = 0;
    double fraction = 0;
    if (const auto rest = std::from_chars(answer.data(), end, whole); rest.ec == std::errc() && rest.ptr == end)
        return whole;
    const auto rest = std::from_chars(answer.data(), end, fraction);
    return rest.ec == std::errc() && rest.ptr == end && std::isfinite(fraction) ? value(fraction) : value();
}

static value yes_or_no(const std::string &line)
{
    std::string answer = line;
    std::ranges::transform(answer, answer.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return answer == "y" || answer == "yes" ? value("yes") : answer == "n" || answer == "no" ? value("no") : value();
}

static value plain_text(const std::string &answer)
{
    return answer.empty() || common::printable(answer) != answer ? value() : value(answer);
}

struct answer_form {
    const char *prompt; /* after the question */
    const char *expected;
    value (*parse)(const std::string &answer); /* empty for what is no answer */
};

static answer_form form_of(answer_kind kind)
{
    switch (kind) {
    case answer_kind::yes_or_no:
        return {" [y/n]", "y or n", yes_or_no};
    case answer_kind::number:
        return {":", "a number such as 12 or 11.9", number_of};
    case answer_kind::text:
        break;
    }
    return {":", "a text", plain_text};
}

static std::string answer_to(const std::string &question)
{
    const auto line = ask(question);
    if (!line)
        throw station::no_reply(station::exit_code::no_verdict, "input-ended", "the input ended before the answer");
    return *line;
}

static outcome question_outcome(const step &task, const value &answer)
{
    if (task.answer != answer_kind::yes_or_no) {
        const std::string unit = task.unit.empty() ? "" : " " + task.unit;
        return {.verdict = verdict::unjudged,
                .summary = fmt::format("{}: {}{}", task.wording, answer.text(), unit),
                .members = {{"value", answer}}};
    }
    const bool passed = answer == "yes";
    const std::string sentence = fmt::format("\"{}\" was answered no; expected yes.", task.wording);
    return {.verdict = passed ? verdict::pass : verdict::fail,
            .summary = passed ? fmt::format("\"{}\" was answered yes", task.wording) : sentence,
            .members = {{"answer", answer}},
            .checks = {{"answer", passed ? verdict::pass : verdict::fail, passed ? "" : sentence}}};
}

static outcome ask_step(const step &task, const std::function<std::string()> &heading)
{
    const answer_form form = form_of(task.answer);
    const std::string unit = task.unit.empty() ? "" : " in " + task.unit;
    for (;;) {
        const std::string line = answer_to(fmt::format("{}: {}{}{}", heading(), task.wording, unit, form.prompt));
        const value answer = form.parse(line);
        if (!answer.is_empty())
            return question_outcome(task, answer);
        common::say(fmt::format("found '{}', expected {}", common::printable(line), form.expected));
    }
}

outcome carry_out_by_hand(const step &task, const std::function<std::string()> &heading,
                          const std::function<void()> &tick)
{
    if (task.is == step_kind::question)
        return ask_step(task, heading);
    if (task.is == step_kind::pause) {
        wait(std::chrono::seconds(task.pause_s), tick);
        return {.verdict = verdict::unjudged, .summary = fmt::format("waited for {} s", task.pause_s)};
    }
    answer_to(fmt::format("{}: {} Then press Enter:", heading(), task.wording));
    return {.verdict = verdict::unjudged, .summary = "the operator has done it"};
}

} // namespace plan
