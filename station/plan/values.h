/* SPDX-License-Identifier: MIT
 *
 * The values of a reply as a whole, beside those of its ports.
 */
#ifndef PLAN_VALUES_H
#define PLAN_VALUES_H

#include <utility>

#include "station/requests/outcome.h"

namespace plan
{

/* A name and a number, text or truth each: groups have their name in front of their members', lists are one text. */
std::vector<std::pair<std::string, common::value>> unit_values(const station::outcome &unit);

} // namespace plan

#endif
