/* SPDX-License-Identifier: MIT
 *
 * Those [[step]]s of a plan file that ask nothing of the service: what the operator is to do or to answer, and pauses.
 */
#ifndef PLAN_MANUAL_FILE_H
#define PLAN_MANUAL_FILE_H

#include "common/toml_reader.h"
#include "plan.h"

namespace plan
{

/* Each adds a step to the plan read so far, as read_step() does. All throw common::file_error. */
void read_instruction(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
void read_question(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);
void read_pause(const std::string &file, const toml::table &table, const std::string &prefix, test_plan &into);

} // namespace plan

#endif
