/* SPDX-License-Identifier: MIT
 *
 * One [[step]] of a plan file, in any of its forms. All throw common::file_error (common/toml_reader.h).
 */
#ifndef PLAN_STEP_FILE_H
#define PLAN_STEP_FILE_H

#include "common/toml_reader.h"
#include "plan.h"

namespace plan
{

/* Adds the step, or the steps of a group, to the plan read so far; those of a round get the prefix, as "burn-in.2.". */
void read_step(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);

/* The step's name, or the one otherwise given to it, that no other step has. */
std::string read_name(const common::toml_reader &reader, const std::string &otherwise, const std::string &prefix,
                      const test_plan &into);

/* Each adds a step that asks nothing of the service, as read_step() does. */
void read_instruction(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
void read_question(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
void read_pause(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);

} // namespace plan

#endif
