/* SPDX-License-Identifier: MIT
 *
 * The steps of a plan that is only looked at.
 */
#include "listing.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/duration.h"
#include "console.h"

namespace plan
{

static std::string duration_text(int64_t seconds)
{
    return common::duration_text(static_cast<double>(seconds));
}

static std::string time_text(const step &asked)
{
    if (is_by_hand(asked))
        return "as long as the operator takes";
    if (asked.is == step_kind::pause)
        return duration_text(asked.pause_s);
    return fmt::format("{}, at most {}",
                       expected_s(asked) > 0 ? "about " + duration_text(expected_s(asked)) : "time unknown",
                       duration_text(asked.timeout_s));
}

std::string list_steps(const test_plan &plan, std::span<const step *const> steps)
{
    std::string text = fmt::format("{} {} for {}: {}; nothing was sent\n", plan.name, plan.version, plan.product,
                                   expectation_text(steps));
    for (const step *asked : steps) {
        text += fmt::format("{:<16}  {}", asked->name, time_text(*asked));
        if (asked->attempts > 1)
            text += fmt::format(", up to {} attempts", asked->attempts);
        text += fmt::format("\n{:18}{}", "", request_name(*asked));
        for (const auto &[name, value] : asked->options)
            text += fmt::format(fmt::runtime(is_by_hand(*asked) ? " {}=\"{}\"" : " {}={}"), name, value);
        text += "\n";
    }
    return text;
}

std::string list_steps_json(const test_plan &plan, std::span<const step *const> steps)
{
    nlohmann::ordered_json listed = nlohmann::ordered_json::array();
    for (const step *asked : steps) {
        nlohmann::ordered_json entry{{"name", asked->name}, {"request", request_name(*asked)}};
        if (!asked->group.empty())
            entry["group"] = asked->group;
        entry["options"] = nlohmann::ordered_json::object();
        for (const auto &[name, value] : asked->options)
            entry["options"][name] = value;
        entry["attempts"] = asked->attempts;
        entry["expected_s"] = expected_s(*asked);
        if (asked->is == step_kind::request)
            entry["timeout_s"] = asked->timeout_s;
        listed.push_back(std::move(entry));
    }
    const nlohmann::ordered_json object{{"plan", plan.name},
                                        {"version", plan.version},
                                        {"product", plan.product},
                                        {"sha256", plan.sha256},
                                        {"steps", listed}};
    return object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace plan
