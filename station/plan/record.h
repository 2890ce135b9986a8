/* SPDX-License-Identifier: MIT
 *
 * What the journal holds of a run of a plan, after its head (identity.h). What a function writes is in the file when it
 * returns, and on the disk after record_end(). All throw journal::not_saved.
 */
#ifndef PLAN_RECORD_H
#define PLAN_RECORD_H

#include "judgement.h"
#include "station/journal/journal.h"

namespace plan
{

/* Begins an attempt, counted from 1, and returns its id. */
std::string begin_attempt(journal::writer &journal, const step &task, int64_t attempt);

/* Writes what a reply says and what it comes to, and ends the attempt: the values of the unit and of each port as
 * measurements with their units and limits, each check as a diagnosis, and "step" for the whole. No verdict is an error
 * in place of the diagnoses. A failure of an attempt that is tried again concludes nothing. */
void end_attempt(journal::writer &journal, const std::string &id, const test_plan &plan, const step &task,
                 const station::outcome &unit, const judgement &result, bool tried_again);

/* The steps of the plan that a run of a part of it leaves out. */
void record_left_out(journal::writer &journal, const test_plan &plan, steps_view steps);

/* The run's last lines; an interruption is named by the signal that was noted. */
void record_end(journal::writer &journal, journal::run_status status, bool interrupted);

} // namespace plan

#endif
