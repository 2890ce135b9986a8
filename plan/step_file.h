/* SPDX-License-Identifier: MIT
 *
 * One [[step]] of a plan file.
 */
#ifndef PLAN_STEP_FILE_H
#define PLAN_STEP_FILE_H

#include "plan.h"
#include "text/toml_reader.h"

namespace plan
{

/* Adds the step to the plan read so far. Throws text::file_error. */
void read_step(const std::string &file, const toml::table &table, test_plan &into);

} // namespace plan

#endif
