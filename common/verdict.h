/* SPDX-License-Identifier: MIT
 *
 * What a check, a port, a step, an attempt or a run came to: the one vocabulary of judgement, its words, its ranking,
 * how a program ends for it, and the check itself.
 */
#ifndef COMMON_VERDICT_H
#define COMMON_VERDICT_H

#include <cstddef>
#include <string>
#include <vector>

#include "value.h"

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
constexpr size_t RUN_RESULTS = 7;

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

/* The unit, one of its ports, or a row of a reply that does not say which port it means. */
struct place {
    std::string id = {};    /* of the hardware: unit, port07. A journal is written without it for a row of a reply, and
                               read with the name in its place */
    std::string name = {};  /* for people: unit, port 7, position 3 */
    std::string group = {}; /* of ports on the panel, as RJ45 */
    int port = 0;           /* number on the front panel; 0: none of its ports */
};

inline place whole_unit()
{
    return {"unit", "unit"};
}

/* What a value had to be. */
struct limit {
    std::string type; /* LESS_THAN_OR_EQUAL */
    common::value value;
    std::string name = {}; /* max; may be empty */
};

/* One thing that was looked at: what it is about, what was measured, what it came to. The same from the reading of a
 * reply over the judgement of a plan and the journal to every report. */
struct check {
    std::string name;                                /* of the check, or of the value when that is all there is */
    common::verdict verdict = common::verdict::none; /* none: a value was measured, no more */
    std::string sentence = {};                       /* what was measured and expected; empty for a pass */
    place where = {};                                /* empty for a check of a reply: its row says it */
    common::value value = {};                        /* what was measured, where that is in question */
    std::string unit = {};                           /* of the value */
    std::vector<limit> limits = {};                  /* on the value */
    std::string time = {};                           /* as the journal has it, 2026-11-23T08:15:02.114Z */
    std::string column = {}; /* of the reply, that it judges; empty: the one of its own name, if there is one */
};

/* Whether it only measures: a value that others may judge. */
inline bool is_measurement(const check &one)
{
    return one.verdict == verdict::none;
}

} // namespace common

#endif
