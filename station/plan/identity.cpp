/* SPDX-License-Identifier: MIT
 *
 * Who runs a plan, where, and on which unit.
 */
#include "identity.h"

#include <cctype>
#include <chrono>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include "common/printable.h"
#include "common/say.h"
#include "prompt.h"

namespace plan
{

static std::string ask_for(const label &wanted)
{
    const std::string expected = expected_text(wanted);
    for (;;) {
        const auto answer = ask(fmt::format("{} ({}):", wanted.name, wanted.hint.empty() ? expected : wanted.hint));
        if (!answer)
            throw station::usage_error(
                fmt::format("{}: found the end of the input, allowed: {}", wanted.option, expected));
        if (matches(wanted, *answer))
            return *answer;
        common::say(fmt::format("{}: found '{}', expected {}", wanted.name, common::printable(*answer), expected));
    }
}

static std::string settle(const label &wanted, const std::string &given, bool may_ask)
{
    std::string text = trimmed(given.empty() ? wanted.preset : given);
    if (!text.empty() && !matches(wanted, text))
        throw station::usage_error(fmt::format("{}: found '{}'{}, allowed: {}", wanted.option, common::printable(text),
                                               common::printable(text) == text ? "" : ", which is no readable UTF-8",
                                               expected_text(wanted)));
    if (!text.empty() || !wanted.required)
        return text;
    if (!may_ask || !somebody_there())
        throw station::usage_error(
            fmt::format("{}: needed when nobody can be asked, {}", wanted.option, expected_text(wanted)));
    return ask_for(wanted);
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
