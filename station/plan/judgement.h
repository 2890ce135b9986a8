/* SPDX-License-Identifier: MIT
 *
 * What a reply comes to by a step of a plan: the request's own verdict, and then the step's limits and the ports that
 * it has to cover. These only ever make a verdict worse, but for a reply that nothing else judges.
 */
#ifndef PLAN_JUDGEMENT_H
#define PLAN_JUDGEMENT_H

#include "plan.h"
#include "station/journal/journal.h"

namespace plan
{

struct judged_check {
    std::string name;
    station::verdict judged;
    std::string sentence; /* empty for a pass */
    journal::subject about;
};

struct judgement {
    station::verdict judged;
    std::string summary; /* for verdict::none why there is no verdict */
    std::vector<judged_check> checks = {};
};

judgement judge(const test_plan &plan, const step &asked, const station::outcome &unit);

/* The unit, a port of its panel, and what a row of the reply is about, as the journal names them. */
journal::subject whole_unit();
journal::subject front_port(uint32_t port);
journal::subject subject_of(const test_plan &plan, const station::outcome &unit, const station::port_outcome &row);

/* What a check is about, for people: "port 7", "unit". */
std::string shown(const journal::subject &about);

/* The name of a limit's check. */
std::string check_name(const limit &asked);

} // namespace plan

#endif
