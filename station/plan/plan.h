/* SPDX-License-Identifier: MIT
 *
 * A test plan: what a unit is, who is to be named, and the steps with what they have to come to. docs/station.md is the
 * reference of its file.
 */
#ifndef PLAN_PLAN_H
#define PLAN_PLAN_H

#include <cstdint>
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
    std::string unit = {}; /* of the answer */
    int64_t pause_s = 0;
    std::vector<std::pair<std::string, std::string>> options = {}; /* as the plan gives them, each name once */
    std::vector<value_limit> limits = {};
    std::vector<uint32_t> covers = {}; /* the ports that have to be judged; empty: whichever the reply names */
    int64_t attempts = 1;
    bool stop_on_fail = false;
    int64_t timeout_s = 0; /* of a request */
};

/* The request, or what stands in its place: "instruction", "manual", "pause". */
const char *request_name(const step &asked);
/* How long the step takes, without the operator's time; 0: not known. */
int64_t expected_s(const step &asked);
/* Whether the step waits for the operator. */
bool is_by_hand(const step &asked);

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

struct test_plan {
    std::string file, sha256, name, version, product;
    std::vector<port_group> panel;
    label serial, operator_name, station;
    std::vector<step> steps;
};

/* Throws common::file_error (common/toml_reader.h) when the file cannot be read or anything in it is wrong. */
test_plan read_plan(const std::string &path);

/* Whether the front panel has the port. */
bool has_port(const test_plan &plan, uint32_t port);

/* Whether the whole text matches the label's pattern. */
bool matches(const label &wanted, const std::string &text);
/* What the pattern asks for, in words if possible. */
std::string expected_text(const label &wanted);

} // namespace plan

#endif
