/* SPDX-License-Identifier: MIT
 *
 * The values of a reply as a whole, beside those of its ports, and the limits of a [[step]] on values of either kind.
 */
#ifndef PLAN_LIMITS_H
#define PLAN_LIMITS_H

#include "common/toml_reader.h"
#include "plan.h"

namespace plan
{

/* A name and a number, text or truth each: groups have their name in front of their members', lists are one text. */
std::vector<std::pair<std::string, common::value>> unit_values(const station::outcome &unit);

/* Adds the limits in the table to the step. Throws common::file_error. */
void read_limits(const std::string &file, const toml::table &table, step &into);

/* A limit on a value that the station itself judges by an option becomes this option's value. The station's own default
 * judges nothing that the plan limits. */
void adopt_limits(step &into);

/* A limit of the step without the bounds that the station judges by its options: one fact is to fail once. */
value_limit left_to_the_plan(const step &of, value_limit bounds);

/* Refuses, with common::file_error, limits on values that the reply does not have or that are of another kind.
 * step_table is that of the whole step; sample has the values of a reply. */
void check_limits(const common::toml_reader &reader, const toml::table &step_table, const step &task,
                  const station::outcome &sample);

} // namespace plan

#endif
