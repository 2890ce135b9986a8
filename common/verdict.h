/* SPDX-License-Identifier: MIT
 *
 * What a check, a port, a step, an attempt or a run came to: the one vocabulary of judgement, its words, its ranking,
 * and how a program ends for it.
 */
#ifndef COMMON_VERDICT_H
#define COMMON_VERDICT_H

#include <cstddef>

namespace common
{

/* Of a check, a port, a step, an attempt. */
enum class verdict {
    none, /* nothing was said: a value was measured, or the thing was not looked at */
    pass,
    unjudged, /* measured, but nothing judges it */
    retried,  /* failed, and was to be tried again */
    not_run,
    not_tested, /* the test ended before it got to this */
    fail,
    no_verdict, /* the station or the service could not come to a verdict */
    incomplete  /* the journal ends within it */
};

/* Whether a counts rather than b when one thing came to both; false for equal ones. */
bool is_worse(verdict a, verdict b);
/* What one thing comes to of which two checks say a and b. */
verdict worse(verdict a, verdict b);
/* A failure, or the lack of a verdict: beside it nothing as a whole has passed. */
bool is_bad(verdict of);

enum class run_result {
    pass,
    fail,
    no_verdict,
    interrupted, /* ended by a signal */
    partial,     /* every step that was chosen passed, but that is not the whole plan */
    unjudged,    /* nothing in it was judged */
    incomplete   /* the journal has no end */
};
constexpr size_t run_results = 7;

/* In capitals: PASS, NOT TESTED; INTERRUPTED. The one word that every report and program has for it; "–" for none. */
const char *word_of(verdict of);
const char *word_of(run_result of);

/* How facmsg-station ends, for whoever called it. */
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

/* Of a single request. */
exit_code exit_code_of(verdict of);

} // namespace common

#endif
