/* SPDX-License-Identifier: MIT
 *
 * Runs for tests of what reads them: journals by the station's own writer, told as stories.
 *
 * A story has items, one a line or several with " | " between them. A text with a backslash is written as in JSON.
 *
 *   serial=TEXT, ports=N, sfp=N      the unit: RJ45 ports, then SFP+ ports
 *   hour=N                           begun so many hours after other runs
 *   only=LIST, skip=LIST, ...        parameters of the run; one without a value is left out
 *   step NAME [1/2] [covers=N]       an attempt; covers the ports from 1 on; with alone: its request judges no port
 *   wait SECONDS
 *   7 VALUE = JSON [UNIT] [<= N]     a measurement at a port, at ports (1-3,7), at the unit, or at position:2
 *   7 CHECK-fail SENTENCE            a check: -pass, -fail, -fail-retried, -not-tested or -unknown
 *   note SENTENCE
 *   over OUTCOME SENTENCE            the judgement on the step, and its end; outcomes as those of a check, or none
 *   error SYMPTOM SENTENCE           its end without a verdict
 *   left SENTENCE                    its end without having been run
 *   fault SYMPTOM SENTENCE           outside of any step
 *   end PASS, FAIL, ERROR or SKIP
 */
#ifndef TESTS_SAMPLE_RUNS_H
#define TESTS_SAMPLE_RUNS_H

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "station/journal/run_record.h"

/* A folder of runs for as long as a test runs. */
struct run_folders {
    std::filesystem::path path;
    run_folders();
    ~run_folders();
    run_folders(const run_folders &) = delete;
    run_folders &operator=(const run_folders &) = delete;
};

/* Writes the journal of a run into the folder, which is made; returns the folder. */
std::filesystem::path write_run(const std::filesystem::path &folder, const std::string &story);
/* The same as a text. */
std::string journal_of(const std::string &story);
/* What a journal is read as: of a story, or with this text. */
journal::run_record record_of(const std::string &story);
journal::run_record record_in(const std::string &text);

/* Of a file of samples: "== NAME" begins a sample with its story, "-- VIEW" what is expected of it there. */
struct sample {
    std::string name, story = {};
    std::vector<std::pair<std::string, std::string>> views = {};
};
std::vector<sample> read_samples(const std::filesystem::path &file);

#endif
