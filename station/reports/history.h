/* SPDX-License-Identifier: MIT
 *
 * What many runs come to: yield, why units fail, and how long it takes.
 */
#ifndef REPORTS_HISTORY_H
#define REPORTS_HISTORY_H

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/text.h"
#include "common/verdict.h"

namespace reports
{

/* Which runs are asked for; empty for any. */
struct history_filter {
    std::string plan = {}, product = {}, station = {}, serial = {};
    std::string since = {}, until = {}; /* days as in 2026-11-23, of the start in UTC, both included */
};

/* Whether the text is a day as in 2026-11-23 that exists. */
bool is_day(const std::string &text);

/* How often something failed. A unit counts once; runs that name no serial number are of no unit. */
struct failure_count {
    size_t units = 0, runs = 0;
};

/* Why units fail: a check of a step. */
struct failure_reason {
    std::string step, check;
    failure_count count;
    std::string example; /* the sentence of one of them */
};

/* Where units fail: a port, and the checks that it failed by. */
struct failing_port {
    std::string name; /* port 13 */
    failure_count count;
    std::vector<std::pair<std::string, failure_count>> checks = {}; /* the most frequent first */
};

struct run_row {
    std::string folder, started, serial, plan, product, station;
    common::run_result result;
    bool partial;
    std::optional<double> seconds;
    size_t failures; /* checks */
};

/* A run of the whole plan comes to a verdict when it ends PASS, or when it holds a failure of the unit: also a run that
 * was interrupted, cut off, or ended by an error of the station, for its failure is not undone by that. Other runs say
 * nothing about the unit. Partial runs only count as runs: a unit that was tried at one step has not passed the plan.
 */
struct history {
    std::vector<run_row> list = {};                         /* as the folders sort */
    size_t units = 0;                                       /* serial numbers */
    std::array<size_t, common::RUN_RESULTS> by_result = {}; /* indexed by common::run_result */
    size_t partial = 0;                                     /* runs */
    size_t judged_units = 0;                                /* with a run that came to a verdict */
    size_t first_passes = 0;                                /* whose first such run passed */
    size_t first_passes_by_retry = 0;                       /* of these, only because a step was tried again */
    size_t final_passes = 0;                                /* whose last such run passed */
    std::vector<failure_reason> reasons = {};               /* the most frequent first */
    std::vector<failing_port> ports = {};                   /* the most frequent first */
    std::vector<double> seconds = {};      /* of whole runs that ended PASS or FAIL, in ascending order */
    std::vector<std::string> skipped = {}; /* folders that hold no readable run */
};

/* Reads the run folders in the directory that the filter lets pass. Throws std::filesystem::filesystem_error when it
 * cannot be listed. */
history read_history(const std::filesystem::path &dir, const history_filter &filter = {});

/* For people, and one JSON object. */
std::string history_text(const history &runs, size_t columns = common::SCREEN_COLUMNS);
std::string runs_text(const history &runs); /* a line a run */
std::string history_json(const history &runs);

} // namespace reports

#endif
