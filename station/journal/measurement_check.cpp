/* SPDX-License-Identifier: MIT */
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "journal_lines.h"

namespace journal
{

static std::string kind_of(const json &value)
{
    return value.is_number() ? "number" : value.type_name();
}

/* Of the values that the validators compare with. */
static std::vector<std::string> kinds_in(const json &content)
{
    std::vector<std::string> kinds;
    if (const json &validators = member(content, "validators"); validators.is_array())
        for (const json &validator : validators)
            if (validator.is_object() && validator.contains("value"))
                kinds.push_back(kind_of(validator["value"]));
    return kinds;
}

void measurement_checker::check_kinds(const std::vector<std::string> &kinds, const json &content)
{
    if (!content.contains("value"))
        return;
    const std::string own = kind_of(content["value"]);
    for (const std::string &kind : kinds)
        if (kind != own)
            add_(fmt::format("a validator compares a {} with a {}", own, kind));
}

void measurement_checker::begin(const std::string &step, const json &content)
{
    const std::string id = raw_text_at(content, "measurementSeriesId");
    if (!series_.emplace(id, series{step, kinds_in(content)}).second)
        add_("measurementSeriesId \"" + id + "\" was used before");
}

measurement_checker::series *measurement_checker::open_series(const std::string &step, const json &content)
{
    const std::string id = raw_text_at(content, "measurementSeriesId");
    const auto entry = series_.find(id);
    if (entry == series_.end() || !entry->second.open || entry->second.step != step) {
        add_("measurement series \"" + id + "\" is not open in the step");
        return nullptr;
    }
    return &entry->second;
}

void measurement_checker::expect_count(const json &content, const char *name, size_t count)
{
    if (const auto value = content.find(name); value != content.end() && *value != count)
        add_(fmt::format("{} is {}; expected {}", name, excerpt(*value), count));
}

void measurement_checker::end_step(const std::string &step)
{
    for (const auto &[id, state] : series_)
        if (state.open && state.step == step)
            add_("measurement series \"" + id + "\" of the step has not ended");
}

void measurement_checker::check(const std::string &step, std::string_view kind, const json &content)
{
    if (kind == "measurement")
        check_kinds(kinds_in(content), content);
    else if (kind == "measurementSeriesStart")
        begin(step, content);
    else if (kind == "testStepEnd")
        end_step(step);
    const bool is_element = kind == "measurementSeriesElement", is_end = kind == "measurementSeriesEnd";
    series *const state = is_element || is_end ? open_series(step, content) : nullptr;
    if (state == nullptr)
        return;
    expect_count(content, is_element ? "index" : "totalCount", state->count);
    if (is_element)
        check_kinds(state->kinds, content);
    state->count += is_element ? 1 : 0;
    state->open = is_element;
}

} // namespace journal
