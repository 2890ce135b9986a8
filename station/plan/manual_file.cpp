/* SPDX-License-Identifier: MIT
 *
 * Those [[step]]s of a plan file that ask nothing of the service: what the operator is to do or to answer, and pauses.
 */
#include <algorithm>
#include <fmt/format.h>

#include "limits.h"
#include "step_file.h"

namespace plan
{

static constexpr int64_t LONGEST_PAUSE_S = 86400;

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
    step task{.name = read_name(reader, "", prefix, into), .is = step_kind::instruction};
    task.wording = wording(reader, "instruct");
    task.options.emplace_back("instruct", task.wording);
    into.steps.push_back(std::move(task));
}

/* A question with a unit or a limit is answered by a value, any other by yes or no. */
static answer_kind answer_to(const common::toml_reader &reader, const step &task)
{
    if (!reader.has("unit") && !reader.has("limits"))
        return answer_kind::yes_or_no;
    const bool is_text =
        std::ranges::any_of(task.limits, [](const value_limit &bounds) { return bounds.equal.is_text(); });
    return is_text ? answer_kind::text : answer_kind::number;
}

void read_question(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "ask", "unit", "limits", "retries", "stop_on_fail"});
    step task{.name = read_name(reader, "", prefix, into), .is = step_kind::question};
    task.wording = wording(reader, "ask");
    task.options.emplace_back("ask", task.wording);
    task.unit = reader.text("unit").value_or("");
    if (!task.unit.empty())
        task.options.emplace_back("unit", task.unit);
    reader.for_table("limits", [&](const toml::table &limits) { read_limits(file, limits, task); });
    task.answer = answer_to(reader, task);
    const common::value value = task.answer == answer_kind::text ? common::value("") : common::value(0);
    check_limits(reader, table, task, {.members = {{"value", value}}});
    for (value_limit &bounds : task.limits)
        bounds.unit = bounds.unit.empty() ? task.unit : bounds.unit;
    read_failure_rules(reader, task);
    into.steps.push_back(std::move(task));
}

void read_pause(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "pause_s"});
    step task{.name = read_name(reader, "", prefix, into), .is = step_kind::pause};
    task.pause_s = *reader.number("pause_s", {1, LONGEST_PAUSE_S});
    task.options.emplace_back("pause_s", std::to_string(task.pause_s));
    into.steps.push_back(std::move(task));
}

} // namespace plan
