/* SPDX-License-Identifier: MIT
 *
 * Runs of plans: a folder for the plan and its results, and the journal of a run in short.
 */
#ifndef TESTS_STATION_RUNS_H
#define TESTS_STATION_RUNS_H

#include <nlohmann/json.hpp>

#include "programs.h"

/* The beginning of a plan of a unit with 28 ports, and the whole. The steps are inline tables: "{request = 'poe',
 * retries = 1}, {request = 'vop'}". */
inline const std::string PLAN_HEAD =
    "name = 'test'\nversion = '1'\nproduct = 'switch'\nserial = {pattern = 'SW[0-9]{4}'}\n"
    "panel = [{name = 'RJ45', ports = '1-24'}, {name = 'SFP+', ports = '25-28'}]\n";
std::string plan_with(const std::string &steps);

/* The command line that runs a plan, which is written into the folder, with its results there too unless the options
 * say where. */
words plan_line(const std::string &folder, const std::string &plan, const words &options = {});
/* The same for steps of a 28-port unit, with labels: nothing is asked. */
words steps_line(const std::string &folder, const std::string &steps, const words &options = {});

/* The folders of the runs, in order. */
std::vector<std::string> runs_in(const std::string &folder);

/* The lines of a journal. A last line without its end is left out. */
std::vector<nlohmann::json> journal_of(const std::string &run);

/* A line for each attempt: step, attempt, its diagnoses that are no pass, errors and log, status; and for the run's
 * end. */
std::string story_of(const std::string &run);

/* The story of the only run in a folder, whose journal has to be valid. */
std::string only_story(const std::string &folder);

#endif
