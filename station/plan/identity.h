/* SPDX-License-Identifier: MIT
 *
 * Who runs a plan, where, and on which unit: given on the command line or asked for, and what it says at the head of
 * the record.
 */
#ifndef PLAN_IDENTITY_H
#define PLAN_IDENTITY_H

#include <nlohmann/json_fwd.hpp>

#include "plan.h"

namespace plan
{

/* As the labels of the plan have it; operator_name may be empty where the plan does not require one. */
struct identity {
    std::string serial, operator_name, station;
};

/* Fills in what is empty: from the plan, from the system, or by asking when may_ask and somebody is there to answer.
 * Throws station::usage_error for what does not match its label or cannot be asked for, and station::no_reply for an
 * interruption. */
identity identify(const test_plan &plan, identity labels, bool may_ask);

/* The folder of a run that starts now: UTC time and serial number, 20261123T081502Z-SW0001, safe as a file's name. */
std::string folder_name(const std::string &serial);

/* The content of the run's first artifact, with a run id of its own. parameters are those of the command line. */
nlohmann::ordered_json run_head(const test_plan &plan, const identity &of, const std::string &command_line,
                                const nlohmann::ordered_json &parameters);

} // namespace plan

#endif
