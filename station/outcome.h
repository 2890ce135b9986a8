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

namespace station
{

/* The program's exit codes. */
enum class exit_code : int {
    passed = 0,     /* also: a raw reply arrived, a list was printed */
    failed = 1,     /* the unit failed its test */
    usage = 2,      /* the command line is wrong; nothing was sent */
    no_verdict = 3, /* the test could not be run, or its reply makes no sense */
    interrupted = 130
};

enum class verdict {
    pass,
    fail,
    none,    /* nothing can be said about the unit or port */
    unjudged /* a reply arrived that the station does not judge */
};

struct port_outcome {
    uint32_t port;
    uint32_t code;
    verdict judged;
    std::string reason; /* what was measured and what was expected; empty for a port that passed */
};

struct outcome {
    verdict judged = verdict::none;
    std::string title = {};                       /* what was tested and how; empty when the summary says it all */
    std::string summary = {};                     /* one line; for verdict::none the sentence that says why */
    std::optional<int64_t> result = std::nullopt; /* the reply's result or status word */
    std::vector<port_outcome> ports = {};
    std::string text = {};               /* more lines for people, each with its line end */
    nlohmann::ordered_json members = {}; /* more members of the JSON object */
};

const char *word_of(verdict judged);
exit_code exit_code_of(verdict judged);

} // namespace station

#endif
