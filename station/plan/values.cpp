/* SPDX-License-Identifier: MIT */
#include "values.h"

namespace plan
{

using common::value;
using station::member;

static std::string joined(const std::vector<value> &list)
{
    std::string text;
    for (const value &entry : list)
        text += (text.empty() ? "" : ",") + entry.shown();
    return text;
}

static void add_values(const std::string &prefix, const std::vector<member> &members,
                       std::vector<std::pair<std::string, value>> &values)
{
    for (const auto &[name, content] : members) {
        if (const auto *group = std::get_if<std::vector<member>>(&content))
            add_values(prefix + name + "_", *group, values);
        else if (const auto *list = std::get_if<std::vector<value>>(&content))
            values.emplace_back(prefix + name, joined(*list));
        else
            values.emplace_back(prefix + name, std::get<value>(content));
    }
}

std::vector<std::pair<std::string, value>> unit_values(const station::outcome &unit)
{
    std::vector<std::pair<std::string, value>> values;
    if (unit.result)
        values.emplace_back("result", *unit.result);
    add_values("", unit.members, values);
    return values;
}

} // namespace plan
