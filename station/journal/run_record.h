/* SPDX-License-Identifier: MIT
 *
 * One run as its journal tells it: what all reports are made from. Texts are valid UTF-8 without control characters;
 * what the journal does not say is empty.
 */
#ifndef JOURNAL_RUN_RECORD_H
#define JOURNAL_RUN_RECORD_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/verdict.h"

namespace journal
{

using common::check;
using common::place;
using common::run_result;
using common::verdict;

/* There is no journal, or the file is none; what() names the file and the line. */
struct no_journal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct moment {
    std::string text = {};
    std::optional<int64_t> ms = std::nullopt; /* since 1970 */
};

/* The station's own fault. */
struct fault {
    std::string symptom, message;
};

struct attempt {
    std::string step = {}, request = {};
    int64_t number = 1, most = 1;
    double expected_s = 0;        /* 0: unknown */
    std::vector<int> covers = {}; /* the ports that it has to judge; empty: whichever its reply names */
    bool judges_ports = true;     /* false: it has no reply that could */
    moment start = {}, end = {};
    moment begun = {}; /* by the service, after another request was done; start when the journal does not say so */
    common::verdict verdict = common::verdict::incomplete;
    std::string summary = {};       /* the sentence on the whole, or why there is no verdict */
    std::vector<check> checks = {}; /* in the journal's order, without the judgement on the whole */
    std::vector<fault> errors = {};
    std::vector<std::string> notes = {}; /* its log */
    bool is_last = true;                 /* no later attempt at the step */
};

struct run_record {
    std::string plan = {}, version = {}, plan_file = {}, plan_sha256 = {};
    std::string station_version = {}, library_version = {};
    std::string serial = {}, product = {}, operator_name = {}, station = {}, run_id = {};
    moment start = {}, end = {}; /* an incomplete run ends with its last line */
    run_result result = run_result::incomplete;
    bool partial = false;          /* the operator left steps of the plan out */
    std::string signal = {};       /* that interrupted it, as SIGINT */
    std::vector<place> ports = {}; /* of the front panel */
    std::vector<attempt> attempts = {};
    std::vector<fault> errors = {}; /* outside of any step, but for the interruption */
};

/* Reads the journal in the run folder; from any thread, also while it is written: what is there then is an incomplete
 * run. A last line without its line end is ignored. A pass of a journal that is not valid is no verdict. Throws
 * no_journal. */
run_record read_run(const std::filesystem::path &run_dir);

/* Whether a name that the operator chose or left out means a step: its own, its group's or its round's. */
bool is_meant(const std::string &name, const std::string &step);

/* The time between, never negative although clocks are set; nothing when either is unknown. */
std::optional<double> seconds_between(const moment &start, const moment &end);

/* How long the request was at work: the wait for a busy service is not the step's. Nothing without an end. */
std::optional<double> time_of(const attempt &step);

/* Whether the step passed after attempts that failed. */
bool passed_by_retry(const attempt &step);

/* What counts of two checks of one thing: the worse; but a check that nothing judges takes no pass from another. */
verdict prevailing(verdict a, verdict b);

} // namespace journal

#endif
