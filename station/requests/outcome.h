/* SPDX-License-Identifier: MIT
 *
 * What a request came to: the verdict, the sentence for people, and one entry per port.
 */
#ifndef STATION_OUTCOME_H
#define STATION_OUTCOME_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "common/exit_code.h"

namespace station
{

using common::exit_code;

/* Of several verdicts on one port the later in this list counts. */
enum class verdict {
    pass,
    unjudged, /* measured, but nothing judges it */
    untested, /* the test ended before it got to this port */
    fail,
    none /* nothing can be said about the unit or port */
};

/* A word about a port beside its verdict. */
struct cell {
    nlohmann::json value;
    std::string shown = value.dump();
};

struct column {
    const char *member;  /* of the port's JSON object */
    const char *heading; /* in the table for people; null: not shown there */
};

/* One of the things that are looked at on a port. */
struct check {
    const char *name;
    verdict judged;
    std::string sentence = {};    /* what was measured and what was expected; empty for a pass */
    const char *column = nullptr; /* that it looks at; null: the one of its own name, if there is one */
};

struct port_outcome {
    uint32_t port;                /* or the position, see outcome::row_name */
    std::vector<cell> cells = {}; /* one for each column */
    verdict judged = verdict::pass;
    bool failed_here = false; /* by the station's own judgement alone, not by the service's */
    std::string reason = {};  /* what was measured and what was expected; empty for a port that passed */
    std::vector<check> checks = {};
};

struct outcome {
    verdict judged = verdict::none;
    std::string title = {};                       /* what was tested and how; empty when the summary says it all */
    std::string summary = {};                     /* one line; for verdict::none the sentence that says why */
    std::optional<int64_t> result = std::nullopt; /* the reply's result or status word */
    const char *row_name = "port";
    std::vector<column> columns = {};
    std::vector<port_outcome> ports = {};
    std::string text = {};               /* more lines for people, each with its line end */
    nlohmann::ordered_json members = {}; /* more members of the JSON object */
    std::vector<check> checks = {};      /* on the unit as a whole */
};

const char *word_of(verdict judged);
exit_code exit_code_of(verdict judged);

} // namespace station

#endif
