/* SPDX-License-Identifier: MIT
 *
 * What a reply comes to by a step of a plan: the request's own verdict, and then the step's limits and the ports that
 * it has to cover. These only ever make a verdict worse, but for a reply that nothing else judges.
 */
#ifndef PLAN_JUDGEMENT_H
#define PLAN_JUDGEMENT_H

#include "plan.h"

namespace plan
{

struct judgement {
    common::verdict verdict;
    std::string summary;                    /* for no verdict why there is none */
    std::vector<common::check> checks = {}; /* each with its place */
};

judgement judge(const test_plan &plan, const step &asked, const station::outcome &unit);

/* A port of the unit's panel, and what a row of the reply is about. */
common::place front_port(uint32_t port);
common::place place_of(const test_plan &plan, const station::outcome &unit, const station::port_outcome &row);

/* The name of a limit's check. */
std::string check_name(const value_limit &asked);

} // namespace plan

#endif
