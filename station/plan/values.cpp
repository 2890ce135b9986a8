/* SPDX-License-Identifier: MIT
 *
 * The values of a reply as a whole.
 */
#include "values.h"

namespace plan
{

using nlohmann::ordered_json;

static std::string joined(const ordered_json &list)
{
    std::string text;
    for (const ordered_json &entry : list)
        text += (text.empty() ? "" : ",") + entry.dump();
    return text;
}

static void add_values(const std::string &prefix, const ordered_json &members,
                       std::vector<std::pair<std::string, ordered_json>> &values)
{
    for (const auto &[name, value] : members.items()) {
        if (value.is_object())
            add_values(prefix + name + "_", value, values);
        else
            values.emplace_back(prefix + name, value.is_array() ? ordered_json(joined(value)) : value);
    }
}

std::vector<std::pair<std::string, ordered_json>> unit_values(const station::outcome &unit)
{
    std::vector<std::pair<std::string, ordered_json>> values;
    if (unit.result)
        values.emplace_back("result", *unit.result);
    add_values("", unit.members, values);
    return values;
}

} // namespace plan
