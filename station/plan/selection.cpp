/* SPDX-License-Identifier: MIT
 *
 * The steps that a run is of: only_names by name, how long they take, and listed for a dry run.
 */
#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "common/text.h"
#include "common/words.h"
#include "plan.h"
#include "station/journal/run_record.h"

namespace plan
{

/* The names that may be given: those of steps, and of groups in place of their steps. */
static std::vector<std::string_view> known_names(const test_plan &plan)
{
    std::vector<std::string_view> names;
    for (const step &task : plan.steps)
        if (task.group.empty() || names.empty() || names.back() != task.group)
            names.emplace_back(task.group.empty() ? task.name : task.group);
    return names;
}

static std::vector<std::string> names_in(const std::string &list, const char *option, const test_plan &plan)
{
    std::vector<std::string> names;
    std::istringstream items(list);
    for (std::string name; std::getline(items, name, ',');) {
        if (std::ranges::none_of(plan.steps, [&](const step &task) { return journal::is_meant(name, task.name); }))
            throw station::usage_error(
                fmt::format("{}: unknown step '{}'{}", option, name, common::expected_one_of(name, known_names(plan))));
        names.push_back(name);
    }
    return names;
}

std::vector<const step *> select_steps(const test_plan &plan, const std::string &only, const std::string &skip)
{
    const std::vector<std::string> only_names = names_in(only, "--only", plan);
    const std::vector<std::string> skip_names = names_in(skip, "--skip", plan);
    const auto among = [](const std::vector<std::string> &names, const step &task) {
        return std::ranges::any_of(names, [&](const std::string &name) { return journal::is_meant(name, task.name); });
    };
    std::vector<const step *> steps;
    for (const step &task : plan.steps)
        if ((only_names.empty() || among(only_names, task)) && !among(skip_names, task))
            steps.push_back(&task);
    return steps;
}

static std::string duration_text(int64_t seconds)
{
    return common::duration_text(static_cast<double>(seconds));
}

std::string expectation_text(steps_view steps)
{
    int64_t total_s = 0;
    for (const step *task : steps)
        total_s += expected_s(*task);
    const auto by_hand = std::ranges::count_if(steps, [](const step *task) { return is_by_hand(*task); });
    const auto unknown =
        std::ranges::count_if(steps, [](const step *task) { return expected_s(*task) == 0; }) - by_hand;
    return fmt::format("{}, about {}{} expected{}", common::counted(steps.size(), "step"), duration_text(total_s),
                       unknown > 0 ? fmt::format(" and {} of unknown length", unknown) : "",
                       by_hand == 0   ? ""
                       : by_hand == 1 ? ", 1 waits for the operator"
                                      : fmt::format(", {} wait for the operator", by_hand));
}

static std::string time_text(const step &task)
{
    if (is_by_hand(task))
        return "as long as the operator takes";
    if (task.is == step_kind::pause)
        return duration_text(task.pause_s);
    return fmt::format("{}, at most {}",
                       expected_s(task) > 0 ? "about " + duration_text(expected_s(task)) : "time unknown",
                       duration_text(task.timeout_s));
}

static std::string options_text(const step &task)
{
    std::string text = request_name(task);
    for (const auto &[name, value] : task.options)
        text += fmt::format(fmt::runtime(is_by_hand(task) ? " {}=\"{}\"" : " {}={}"), name, value);
    return text;
}

std::string list_steps(const test_plan &plan, steps_view steps, size_t columns)
{
    constexpr size_t INDENT = 18;
    const auto fit = [&](const std::string &text, size_t column, size_t indent) {
        return columns == 0 ? text : common::folded(text, column, indent, columns);
    };
    const std::string head = fmt::format("{} {} for {}: {}; nothing was sent", plan.name, plan.version, plan.product,
                                         expectation_text(steps));
    std::string text = fit(head, 0, 4) + "\n";
    for (const step *task : steps) {
        const std::string attempts = task->attempts > 1 ? fmt::format(", up to {} attempts", task->attempts) : "";
        const std::string name = common::padded(task->name, INDENT - 2) + "  ";
        text += fmt::format("{}{}\n{:{}}{}\n", name, fit(time_text(*task) + attempts, name.size(), INDENT), "", INDENT,
                            fit(options_text(*task), INDENT, INDENT));
    }
    return text;
}

static nlohmann::ordered_json step_json(const step &task)
{
    nlohmann::ordered_json entry{{"name", task.name}, {"request", request_name(task)}};
    if (!task.group.empty())
        entry["group"] = task.group;
    entry["options"] = nlohmann::ordered_json::object();
    for (const auto &[name, value] : task.options)
        entry["options"][name] = value;
    entry["attempts"] = task.attempts;
    entry["expected_s"] = expected_s(task);
    if (task.is == step_kind::request)
        entry["timeout_s"] = task.timeout_s;
    return entry;
}

std::string list_steps_json(const test_plan &plan, steps_view steps)
{
    nlohmann::ordered_json entries = nlohmann::ordered_json::array();
    for (const step *task : steps)
        entries.push_back(step_json(*task));
    const nlohmann::ordered_json object{{"plan", plan.name},
                                        {"version", plan.version},
                                        {"product", plan.product},
                                        {"sha256", plan.sha256},
                                        {"steps", entries}};
    return object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace plan
