/* SPDX-License-Identifier: MIT
 *
 * The limits of a [[step]], held against the values that the request's reply has.
 */
#ifndef PLAN_STEP_LIMITS_H
#define PLAN_STEP_LIMITS_H

#include "common/toml_reader.h"
#include "plan.h"

namespace plan
{

/* Adds the limits in the table to the step. All throw common::file_error. */
void read_limits(const std::string &file, const toml::table &table, step &into);

/* A limit on a value that the station itself judges by an option becomes this option's value. The station's own default
 * judges nothing that the plan limits. */
void adopt_limits(step &into);

/* A limit of the step without the bounds that the station judges by its options: one fact is to fail once. */
value_limit left_to_the_plan(const step &of, value_limit asked);

/* Refuses limits on values that the reply does not have, or that are of another kind. step_table is that of the whole
 * step; seen has the values of a reply. */
void check_limits(const common::toml_reader &reader, const toml::table &step_table, const step &read,
                  const station::outcome &seen);

} // namespace plan

#endif
