/* SPDX-License-Identifier: MIT
 *
 * What many runs come to: yield, why units fail, and how long it takes.
 */
#ifndef REPORTS_HISTORY_H
#define REPORTS_HISTORY_H

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "journal/verdict.h"

namespace reports
{

/* Why units fail: a check of a step. */
struct failure_reason {
    std::string step, check;
    size_t units;
    std::string example; /* the sentence of one of them */
};

/* A run of the whole plan comes to a verdict when it ends PASS, or when it holds a failure of the unit: also a run that
 * was interrupted, cut off, or ended by an error of the station, for its failure is not undone by that. Other runs say
 * nothing about the unit. Partial runs only count as runs: a unit that was tried at one step has not passed the plan.
 */
struct history {
    size_t runs = 0;
    size_t units = 0;                                        /* serial numbers */
    std::array<size_t, journal::run_results> by_result = {}; /* indexed by journal::run_result */
    size_t partial = 0;                                      /* runs */
    size_t judged_units = 0;                                 /* with a run that came to a verdict */
    size_t passed_first = 0;                                 /* whose first such run passed */
    size_t passed_first_by_retry = 0;                        /* of these, only because a step was tried again */
    size_t passed_last = 0;                                  /* whose last such run passed */
    std::vector<failure_reason> reasons = {};                /* the most frequent first */
    std::vector<double> seconds = {};      /* of whole runs that ended PASS or FAIL, in ascending order */
    std::vector<std::string> skipped = {}; /* folders that hold no readable run */
};

/* Reads all run folders in the directory. Throws std::filesystem::filesystem_error when it cannot be listed. */
history read_history(const std::filesystem::path &dir);

/* For people, in 80 columns; and one JSON object. */
std::string history_text(const history &runs);
std::string history_json(const history &runs);

} // namespace reports

#endif
