/* SPDX-License-Identifier: MIT
 *
 * What is known of each port of the front panel, held against what the plan asks of it.
 *
 * A step asks for the ports that it covers. One without such a list asks for those that its reply names; and while it
 * has no reply, for every port, unless the journal says that its request judges none. So does one that fails and names
 * no port: nobody knows which it means.
 */
#ifndef REPORTS_PORT_STATE_H
#define REPORTS_PORT_STATE_H

#include <string>
#include <vector>

#include "station/journal/run_record.h"

namespace reports
{

enum class port_state {
    failed,
    retried, /* failed at first: the step was to be tried again */
    passed_so_far,
    passed, /* all that the plan asks of it */
    unknown
};

/* FAIL, RETRIED, PASSED SO FAR, PASS; "–" when nothing is known. */
const char *word_of(port_state state);

/* A step of which a port lacks the judgement. */
struct missing_step {
    std::string step;
    common::verdict why;     /* what the step came to there: not tested, not run, no verdict, incomplete, fail */
    size_t order;            /* of the steps */
    const char *detail = ""; /* of a failure of which nobody knows the ports */
};

struct port_finding {
    common::place port;
    port_state state = port_state::unknown;
    std::string sentence = {};
    std::vector<missing_step> missing = {};
};

/* One for each port of the front panel. */
std::vector<port_finding> ports_of(const journal::run_record &run);

/* A missing step and the ports that have not failed and lack it, in words: "ports 1-12, 14" or "all ports". */
struct missing_ports {
    missing_step missing;
    std::string ports;
};
std::vector<missing_ports> missing_in(const std::vector<port_finding> &ports);

} // namespace reports

#endif
