/* SPDX-License-Identifier: MIT
 *
 * Who runs a plan, where, and on which unit: given on the command line or asked for.
 */
#ifndef PLAN_IDENTITY_H
#define PLAN_IDENTITY_H

#include "record.h"

namespace plan
{

/* Fills in what was not given: from the plan, from the system, or by asking when may_ask and somebody is there to
 * answer. Throws station::usage_error. */
identity identify(const test_plan &plan, identity given, bool may_ask);

/* The folder of a run that starts now, named by the time and the serial number. */
std::string folder_name(const std::string &serial);

} // namespace plan

#endif
