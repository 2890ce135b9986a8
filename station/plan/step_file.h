/* SPDX-License-Identifier: MIT
 *
 * One [[step]] of a plan file.
 */
#ifndef PLAN_STEP_FILE_H
#define PLAN_STEP_FILE_H

#include "common/toml_reader.h"
#include "plan.h"

namespace plan
{

/* Adds the step, or the steps of a group, to the plan read so far; those of a round get the prefix, as "burn-in.2.".
 * Throws common::file_error. */
void read_step(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);

/* The step's name, or the one otherwise given to it, that no other step has. */
std::string read_name(const common::toml_reader &reader, const std::string &otherwise, const std::string &prefix,
                      const test_plan &into);

} // namespace plan

#endif
