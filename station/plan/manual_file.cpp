/* SPDX-License-Identifier: MIT
 *
 * Those [[step]]s of a plan file that ask nothing of the service: what the operator is to do or to answer, and pauses.
 */
#include <algorithm>
#include <fmt/format.h>

#include "step_file.h"
#include "step_limits.h"

namespace plan
{

static constexpr int64_t longest_pause_s = 86400;

static std::string wording(const common::toml_reader &reader, const char *key)
{
    std::string words = *reader.text(key);
    if (words.find_first_not_of(" \t\r\n") == std::string::npos)
        reader.fail(key, fmt::format("{} is \"{}\", expected a text for the operator", key, words));
    return words;
}

void read_instruction(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "instruct"});
    step read{.name = read_name(reader, "", prefix, into), .is = step_kind::instruction};
    read.wording = wording(reader, "instruct");
    read.options.emplace_back("instruct", read.wording);
    into.steps.push_back(std::move(read));
}

/* A question with a unit or a limit is answered by a value, any other by yes or no. */
static answer_kind answer_to(const common::toml_reader &reader, const step &read)
{
    if (!reader.has("unit") && !reader.has("limits"))
        return answer_kind::yes_or_no;
    const bool is_text =
        std::ranges::any_of(read.limits, [](const value_limit &asked) { return asked.equal.is_text(); });
    return is_text ? answer_kind::text : answer_kind::number;
}

void read_question(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "ask", "unit", "limits", "retries", "stop_on_fail"});
    step read{.name = read_name(reader, "", prefix, into), .is = step_kind::question};
    read.wording = wording(reader, "ask");
    read.options.emplace_back("ask", read.wording);
    read.unit = reader.text("unit").value_or("");
    if (!read.unit.empty())
        read.options.emplace_back("unit", read.unit);
    reader.for_table("limits", [&](const toml::table &limits) { read_limits(file, limits, read); });
    read.answer = answer_to(reader, read);
    const common::value value = read.answer == answer_kind::text ? common::value("") : common::value(0);
    check_limits(reader, table, read, {.members = {{"value", value}}});
    for (value_limit &asked : read.limits)
        asked.unit = asked.unit.empty() ? read.unit : asked.unit;
    read.attempts = 1 + reader.number("retries", {0, 9}).value_or(0);
    read.stop_on_fail = reader.flag("stop_on_fail", false);
    into.steps.push_back(std::move(read));
}

void read_pause(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "pause_s"});
    step read{.name = read_name(reader, "", prefix, into), .is = step_kind::pause};
    read.pause_s = *reader.number("pause_s", {1, longest_pause_s});
    read.options.emplace_back("pause_s", std::to_string(read.pause_s));
    into.steps.push_back(std::move(read));
}

} // namespace plan
