/* SPDX-License-Identifier: MIT
 *
 * A test plan: what a unit is, who is to be named, and the steps with what they have to come to. docs/station.md is the
 * reference of its file.
 */
#ifndef PLAN_PLAN_H
#define PLAN_PLAN_H

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "station/requests/command.h"

namespace plan
{

/* What a value of the reply may be; a bound is empty where there is none. */
struct value_limit {
    std::string value; /* a column of the ports, or a member of the whole reply */
    common::value least = {}, most = {}, equal = {};
    std::string unit = {}; /* of the value, where the plan knows it */
};

enum class step_kind {
    request,     /* asks the service */
    instruction, /* tells the operator what to do */
    question,    /* asks the operator what there is to see or to measure */
    pause
};

enum class answer_kind { yes_or_no, number, text };

struct step {
    std::string name;       /* in a group with its name and the round in front: burn-in.2.flow */
    std::string group = {}; /* that is repeated */
    step_kind is = step_kind::request;
    const station::command *row = nullptr; /* of a request */
    station::request sent = {};
    std::string wording = {}; /* of an instruction or a question */
    answer_kind answer = answer_kind::yes_or_no;
    std::string unit = {};                                         /* of the answer */
    int64_t pause_s = 0;                                           /* 1 to 86400 */
    std::vector<std::pair<std::string, std::string>> options = {}; /* as the plan gives them, each name once */
    std::vector<value_limit> limits = {};
    std::vector<uint32_t> covers = {}; /* the ports that have to be judged; empty: whichever the reply names */
    int64_t attempts = 1;              /* 1 to 10 */
    bool stop_on_fail = false;
    int64_t timeout_s = 0; /* of a request, 1 to 86400 */
};
using steps_view = std::span<const step *const>; /* of one plan, in its order */

/* The request, or what stands in its place: "instruction", "manual", "pause". */
const char *request_name(const step &task);
/* How long the step takes, without the operator's time; 0: not known. */
int64_t expected_s(const step &task);
/* Whether the step waits for the operator. */
bool is_by_hand(const step &task);

/* Ports of the front panel that are of a kind. */
struct port_group {
    std::string name;
    std::vector<uint32_t> ports;
};

/* A text that a run is labelled with. */
struct label {
    const char *name;   /* for people */
    const char *option; /* of the command line */
    bool required;
    std::string pattern; /* ECMAScript, of the whole text */
    std::string preset = {};
    std::string hint = {}; /* for whoever is asked for it */
};

/* Whether the whole text matches the label's pattern. Throws std::regex_error for a pattern that is none. */
bool matches(const label &field, const std::string &text);
/* What the pattern asks for, in words if possible. */
std::string expected_text(const label &field);

struct test_plan {
    std::string file, sha256, name, version, product;
    std::vector<port_group> panel; /* no port in two of them */
    label serial, operator_name, station;
    std::vector<step> steps; /* at least one; no two of one name */
};

/* Throws common::file_error (common/toml_reader.h) when the file cannot be read or anything in it is wrong. */
test_plan read_plan(const std::string &path);

/* Whether the front panel has the port. */
bool has_port(const test_plan &plan, uint32_t port);

/* The steps that the lists leave, which name steps and groups with commas between them; an empty `only` means all.
 * Throws station::usage_error for a name that nothing in the plan has. */
std::vector<const step *> select_steps(const test_plan &plan, const std::string &only, const std::string &skip);

/* "13 steps, about 4 min and 1 of unknown length expected, 2 wait for the operator" */
std::string expectation_text(steps_view steps);

/* The steps of a plan that is only looked at: for a terminal of so many columns, where 0 is for none and lines are as
 * long as they are; and as one JSON object. */
std::string list_steps(const test_plan &plan, steps_view steps, size_t columns);
std::string list_steps_json(const test_plan &plan, steps_view steps);

} // namespace plan

#endif
