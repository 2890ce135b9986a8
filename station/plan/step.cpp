/* SPDX-License-Identifier: MIT
 *
 * What the steps of a plan have in common, whatever they do.
 */
#include "plan.h"

namespace plan
{

const char *request_name(const step &asked)
{
    switch (asked.is) {
    case step_kind::instruction:
        return "instruction";
    case step_kind::question:
        return "manual";
    case step_kind::pause:
        return "pause";
    case step_kind::request:
        break;
    }
    return asked.row->name;
}

int64_t expected_s(const step &asked)
{
    return asked.row != nullptr ? asked.row->expected.typical_s : asked.pause_s;
}

bool is_by_hand(const step &asked)
{
    return asked.is == step_kind::instruction || asked.is == step_kind::question;
}

} // namespace plan
