/* SPDX-License-Identifier: MIT
 *
 * What the journal holds of a run of a plan.
 */
#ifndef PLAN_RECORD_H
#define PLAN_RECORD_H

#include <nlohmann/json_fwd.hpp>

#include "judgement.h"
#include "station/journal/journal.h"

namespace plan
{

/* Who and what a run is of. */
struct identity {
    std::string serial, operator_name, station; /* operator_name may be empty */
};

/* The content of the run's first artifact. parameters are those of the command line. */
nlohmann::ordered_json run_head(const test_plan &plan, const identity &of, const std::string &command_line,
                                const nlohmann::ordered_json &parameters);

/* Begins an attempt, counted from 1, and returns its id. */
std::string begin_attempt(journal::writer &journal, const step &asked, int64_t attempt);

/* Writes what a reply says and what it comes to, and ends the attempt. A failure of an attempt that is tried again
 * concludes nothing. */
void end_attempt(journal::writer &journal, const std::string &id, const test_plan &plan, const step &asked,
                 const station::outcome &unit, const judgement &result, bool tried_again);

} // namespace plan

#endif
