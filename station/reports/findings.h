/* SPDX-License-Identifier: MIT
 *
 * What the reports have in common: what failed, what the station could not do, and numbers and times in words.
 */
#ifndef REPORTS_FINDINGS_H
#define REPORTS_FINDINGS_H

#include <optional>
#include <string>
#include <vector>

#include "common/words.h"
#include "station/journal/run_record.h"

namespace reports
{

/* What is said of a run whose journal does not say it itself. */
constexpr const char *no_end = "The journal has no end: the run was cut off. It is no pass.";
constexpr const char *unexplained_failure = "The run failed, but its journal does not say why.";
constexpr const char *no_reason = "No reason is given.";

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
std::string limits_with_unit(const common::check &made);
using common::counted;

} // namespace reports

#endif
