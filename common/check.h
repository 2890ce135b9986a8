/* SPDX-License-Identifier: MIT
 *
 * One thing that was looked at: what it is about, what was measured, what it came to. The same from the reading of a
 * reply over the judgement of a plan and the journal to every report.
 */
#ifndef COMMON_CHECK_H
#define COMMON_CHECK_H

#include <string>
#include <vector>

#include "value.h"
#include "verdict.h"

namespace common
{

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
