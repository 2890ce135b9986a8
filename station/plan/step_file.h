/* SPDX-License-Identifier: MIT
 *
 * One [[step]] of a plan file, in any of its forms. All throw common::file_error.
 */
#ifndef PLAN_STEP_FILE_H
#define PLAN_STEP_FILE_H

#include "common/toml_reader.h"
#include "plan.h"

namespace plan
{

/* Adds the step, or the steps of a group, to the plan read so far; those of a round get the prefix, as "burn-in.2.". */
void read_step(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);

/* The forms that ask nothing of the service. */
void read_instruction(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
void read_question(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
void read_pause(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);

/* The step's name, which no other step has: its own, or else the usual one of its form; an empty one is none. */
std::string read_name(const common::toml_reader &reader, const std::string &usual, const std::string &prefix,
                      const test_plan &into);
/* What happens when the step fails: retries and stop_on_fail. */
void read_failure_rules(const common::toml_reader &reader, step &into);

} // namespace plan

#endif
