/* SPDX-License-Identifier: MIT
 *
 * Who runs a plan, where, and on which unit.
 */
#include "identity.h"

#include <cctype>
#include <chrono>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <iostream>
#include <termios.h>
#include <unistd.h>

#include "text/say.h"

namespace plan
{

static std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/* Asks until the answer matches. What was typed before the question, by a scanner perhaps, is no answer to it. */
static std::string ask(const label &wanted)
{
    for (;;) {
        tcflush(STDIN_FILENO, TCIFLUSH);
        std::fputs(fmt::format("{} ({}): ", wanted.option + 2, wanted.pattern).c_str(), stderr);
        std::fflush(stderr);
        std::string answer;
        if (!std::getline(std::cin, answer))
            throw station::usage_error(fmt::format("{}: found the end of the input, allowed: a text that matches {}",
                                                   wanted.option, wanted.pattern));
        answer = trimmed(answer);
        if (matches(wanted, answer))
            return answer;
        text::say(fmt::format("'{}' does not match {}", answer, wanted.pattern));
    }
}

static std::string settle(const label &wanted, const std::string &given, bool may_ask)
{
    std::string text = trimmed(given.empty() ? wanted.preset : given);
    if (!text.empty() && !matches(wanted, text))
        throw station::usage_error(
            fmt::format("{}: found '{}', allowed: a text that matches {}", wanted.option, text, wanted.pattern));
    if (!text.empty() || !wanted.required)
        return text;
    if (!may_ask || !isatty(STDIN_FILENO) || !isatty(STDERR_FILENO))
        throw station::usage_error(
            fmt::format("{}: needed when nobody can be asked, a text that matches {}", wanted.option, wanted.pattern));
    return ask(wanted);
}

static std::string host_name()
{
    char name[256] = "";
    gethostname(name, sizeof(name) - 1);
    return name;
}

identity identify(const test_plan &plan, identity given, bool may_ask)
{
    given.serial = settle(plan.serial, given.serial, may_ask);
    given.operator_name = settle(plan.operator_name, given.operator_name, may_ask);
    if (given.station.empty() && plan.station.preset.empty() && !plan.station.required)
        given.station = host_name();
    given.station = settle(plan.station, given.station, may_ask);
    return given;
}

std::string folder_name(const std::string &serial)
{
    constexpr size_t longest = 64;
    std::string safe = serial.substr(0, longest);
    for (char &letter : safe)
        if (!std::isalnum(static_cast<unsigned char>(letter)) && letter != '-' && letter != '.')
            letter = '_';
    if (safe.empty() || safe.front() == '.')
        safe.insert(0, "_");
    return fmt::format("{:%Y%m%dT%H%M%SZ}-{}", fmt::gmtime(std::chrono::system_clock::now()), safe);
}

} // namespace plan
