/* SPDX-License-Identifier: MIT
 *
 * What a request came to: the verdict, the sentence for people, and one entry per port.
 */
#ifndef STATION_OUTCOME_H
#define STATION_OUTCOME_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "common/verdict.h"

namespace station
{

using common::check;
using common::exit_code;
using common::verdict;

/* A word about a port beside its verdict. */
struct cell {
    common::value value;
    std::string display = value.json_text();
};

struct column {
    const char *member;  /* of the port's JSON object */
    const char *heading; /* in the table for people; null: not shown there */
};

struct port_outcome {
    uint32_t port;                /* or the position, see outcome::row_name */
    std::vector<cell> cells = {}; /* one for each column */
    common::verdict verdict = common::verdict::pass;
    bool failed_here = false; /* by the station's own judgement alone, not by the service's */
    std::string reason = {};  /* what was measured and what was expected; empty for a port that passed */
    std::vector<check> checks = {};
};

/* A value of the reply as a whole, a list of them, or a group with members of its own. */
struct member {
    std::string name;
    std::variant<common::value, std::vector<common::value>, std::vector<member>> content;
};

struct outcome {
    common::verdict verdict = common::verdict::no_verdict;
    std::string title = {};                       /* what was tested and how; empty when the summary says it all */
    std::string summary = {};                     /* one line; for no verdict the sentence that says why */
    std::optional<int64_t> result = std::nullopt; /* the reply's result or status word */
    const char *row_name = "port";
    std::vector<column> columns = {};
    std::vector<port_outcome> ports = {};
    std::string text = {};            /* more lines for people, each with its line end */
    std::vector<member> members = {}; /* more members of the JSON object */
    std::vector<check> checks = {};   /* on the unit as a whole */
};

} // namespace station

#endif
