/* SPDX-License-Identifier: MIT
 *
 * A plan from the command line to the verdict: read, started, run, recorded and reported.
 */
#ifndef PLAN_RUN_PLAN_H
#define PLAN_RUN_PLAN_H

#include "identity.h"

namespace plan
{

/* What was given on the command line; empty for what was not. */
struct order {
    std::string file;
    identity of;
    std::string results = "results"; /* the folder of all runs */
    std::string only, skip;          /* names of steps, with commas between them */
    bool dry_run = false;
    bool stop_on_fail = false;
    bool no_input = false;
    int64_t grace_s = 10;
    int64_t busy_timeout_s = station::busy_timeout_s;
    bool wait = false;     /* for another station that is at the service */
    std::string directory; /* the service's */
    bool no_progress = false;
    bool json = false; /* one object on stdout, and nothing else */
    std::string command_line;
};

/* Says on stdout how it ends, and returns how the program is to. To be called once, in the program's first thread, as
 * it takes over the signals. Throws station::usage_error and common::file_error before anything is sent or created, and
 * station::no_reply when the service's directory cannot be entered or another station is at it. */
station::exit_code run_plan(const order &job);

} // namespace plan

#endif
