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
    common::verdict verdict; /* pass, fail, unjudged or no_verdict */
    std::string summary;     /* one sentence for people; for no verdict why there is none */
    /* Each with its place: those of the ports in the reply's order, those on the unit as a whole, then the plan's own,
     * which are named as the value with "_limit" behind it, or "coverage". None when there is no verdict. */
    std::vector<common::check> checks = {};
};

/* Judges the reply to a step of the plan. A reply that names a port which is not on the plan's panel has no verdict; a
 * limited value that is missing fails, unless the port has failed or was not tested anyway; what a check of the request
 * has failed by, a limit does not fail again. Throws nothing of its own; needs no lock, as it changes nothing. */
judgement judge(const test_plan &plan, const step &task, const station::outcome &unit);

/* A port of the unit's panel, 1 to 256; and what a row of the reply is about, which is no port of the panel when the
 * reply lists positions. */
common::place front_port(uint32_t port);
common::place place_of(const test_plan &plan, const station::outcome &unit, const station::port_outcome &row);

} // namespace plan

#endif
