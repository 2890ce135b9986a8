/* SPDX-License-Identifier: MIT
 *
 * How facmsg-station ends, for whoever called it.
 */
#ifndef COMMON_EXIT_CODE_H
#define COMMON_EXIT_CODE_H

namespace common
{

enum class exit_code : int {
    passed = 0,        /* also: a raw reply arrived, a list was printed, a journal is valid */
    failed = 1,        /* the unit failed its test, or a journal is not valid */
    usage = 2,         /* the command line or the plan is wrong, or there is no such run; nothing was sent */
    no_verdict = 3,    /* the test could not be run, or its reply makes no sense */
    not_saved = 4,     /* the record of a run could not be kept */
    nothing_run = 5,   /* a plan without a step that was run and judged, or a history without a run */
    partial = 6,       /* a part of a plan passed; nothing is known of the rest */
    hung_up = 129,     /* by SIGHUP */
    interrupted = 130, /* by SIGINT */
    quit = 131,        /* by SIGQUIT */
    terminated = 143   /* by SIGTERM */
};

} // namespace common

#endif
