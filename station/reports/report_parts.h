/* SPDX-License-Identifier: MIT
 *
 * What the reports have in common: what failed, what the station could not do, what is known of each port, and numbers
 * and times in words.
 */
#ifndef REPORTS_REPORT_PARTS_H
#define REPORTS_REPORT_PARTS_H

#include <optional>
#include <string>
#include <vector>

#include "common/words.h"
#include "station/journal/run_record.h"

namespace reports
{

/* What is said of a run whose journal does not say it itself. */
constexpr const char *NO_END = "The journal has no end: the run was cut off. It is no pass.";
constexpr const char *UNEXPLAINED_FAILURE = "The run failed, but its journal does not say why.";
constexpr const char *NO_REASON = "No reason is given.";

/* A failure of the unit, or a fault of the station, whose symptom is then the check's name; and the step, if any. */
struct finding {
    std::string step;
    common::check check;
};

/* What makes the unit fail, port by port. A step as a whole appears only when none of its checks says why. */
std::vector<finding> failures_of(const journal::run_record &run);
/* What failed in attempts after which it did not fail again. */
std::vector<finding> repaired_in(const journal::run_record &run);
/* The station's own faults; that the journal has no end is one. */
std::vector<finding> faults_of(const journal::run_record &run);

/* "2 min 14 s"; "-" when unknown. */
std::string duration_text(std::optional<double> seconds);
/* "2026-11-23 08:15:02 UTC"; what the journal says when that is no time. */
std::string time_text(const journal::moment &time);
/* "<= 5, > 0": the limits of a measurement; empty when it has none. With the unit of its numbers: "<= 57 V". */
std::string limits_text(const std::vector<common::limit> &limits);
std::string limits_with_unit(const common::check &entry);
using common::counted;

/* What keeps it from being a run of the whole plan: by which signal it was interrupted, how many steps were run; empty
 * when nothing does. */
std::string shortfall_text(const journal::run_record &run);

bool is_whole_plan(const journal::run_record &run);

/* What the result comes to, such as "5 failed checks" or "every step passed". */
std::string headline(const journal::run_record &run);

/* What is known of each port of the front panel, held against what the plan asks of it.
 *
 * A step asks for the ports that it covers. One without such a list asks for those that its reply names; and while it
 * has no reply, for every port, unless the journal says that its request judges none. So does one that fails and names
 * no port: nobody knows which it means. */
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
