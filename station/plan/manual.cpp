/* SPDX-License-Identifier: MIT
 *
 * Instructions, questions, pauses.
 */
#include "manual.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fmt/format.h>

#include "common/printable.h"
#include "common/say.h"
#include "prompt.h"
#include "station/requests/carry_out.h"

namespace plan
{

using common::value;
using common::verdict;
using station::outcome;

/* A whole text as a number; empty when it is none. */
static value number_of(const std::string &answer)
{
    const char *end = answer.data() + answer.size();
    int64_t whole = 0;
    double broken = 0;
    if (const auto read = std::from_chars(answer.data(), end, whole); read.ec == std::errc() && read.ptr == end)
        return whole;
    const auto read = std::from_chars(answer.data(), end, broken);
    return read.ec == std::errc() && read.ptr == end && std::isfinite(broken) ? value(broken) : value();
}

static value yes_or_no(const std::string &given)
{
    std::string answer = given;
    std::ranges::transform(answer, answer.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return answer == "y" || answer == "yes" ? value("yes") : answer == "n" || answer == "no" ? value("no") : value();
}

static value plain_text(const std::string &answer)
{
    return answer.empty() || common::printable(answer) != answer ? value() : value(answer);
}

struct answer_form {
    const char *asked_for; /* after the question */
    const char *expected;
    value (*read)(const std::string &answer); /* empty for what is no answer */
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

static outcome question_outcome(const step &asked, const value &answer)
{
    if (asked.answer != answer_kind::yes_or_no) {
        const std::string unit = asked.unit.empty() ? "" : " " + asked.unit;
        return {.verdict = verdict::unjudged,
                .summary = fmt::format("{}: {}{}", asked.wording, answer.text(), unit),
                .members = {{"value", answer}}};
    }
    const bool passed = answer == "yes";
    const std::string sentence = fmt::format("\"{}\" was answered no; expected yes.", asked.wording);
    return {.verdict = passed ? verdict::pass : verdict::fail,
            .summary = passed ? fmt::format("\"{}\" was answered yes", asked.wording) : sentence,
            .members = {{"answer", answer}},
            .checks = {{"answer", passed ? verdict::pass : verdict::fail, passed ? "" : sentence}}};
}

static outcome answered(const step &asked, const std::function<std::string()> &heading)
{
    const answer_form form = form_of(asked.answer);
    const std::string unit = asked.unit.empty() ? "" : " in " + asked.unit;
    for (;;) {
        const std::string line = answer_to(fmt::format("{}: {}{}{}", heading(), asked.wording, unit, form.asked_for));
        const value answer = form.read(line);
        if (!answer.is_empty())
            return question_outcome(asked, answer);
        common::say(fmt::format("found '{}', expected {}", common::printable(line), form.expected));
    }
}

outcome carry_out_by_hand(const step &asked, const std::function<std::string()> &heading,
                          const std::function<void()> &tick)
{
    if (asked.is == step_kind::question)
        return answered(asked, heading);
    if (asked.is == step_kind::pause) {
        wait(std::chrono::seconds(asked.pause_s), tick);
        return {.verdict = verdict::unjudged, .summary = fmt::format("waited for {} s", asked.pause_s)};
    }
    answer_to(fmt::format("{}: {} Then press Enter:", heading(), asked.wording));
    return {.verdict = verdict::unjudged, .summary = "the operator has done it"};
}

} // namespace plan
