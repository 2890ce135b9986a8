/* SPDX-License-Identifier: MIT
 *
 * A test plan: what a unit is, who is to be named, and the steps with what they have to come to. docs/station.md is the
 * reference of its file.
 */
#ifndef PLAN_PLAN_H
#define PLAN_PLAN_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "station/command.h"

namespace plan
{

/* What a value of the reply may be; null where nothing is asked. */
struct limit {
    std::string value; /* a column of the ports, or a member of the whole reply */
    nlohmann::json least, most, equal;
};

struct step {
    std::string name;
    const station::command *row;
    station::request sent;
    nlohmann::ordered_json options = nlohmann::ordered_json::object(); /* as the plan gives them, in texts */
    std::vector<limit> limits = {};
    std::vector<uint32_t> covers = {}; /* the ports that have to be judged; empty: whichever the reply names */
    int64_t attempts = 1;
    bool stop_on_fail = false;
    int64_t timeout_s = 0;
};

/* Ports of the front panel that are of a kind. */
struct port_group {
    std::string name;
    std::vector<uint32_t> ports;
};

/* A text that a run is labelled with. */
struct label {
    const char *option; /* of the command line */
    bool required;
    std::string pattern; /* ECMAScript, of the whole text */
    std::string preset = {};
};

struct test_plan {
    std::string file, name, version, product;
    std::vector<port_group> panel;
    label serial, operator_name, station;
    std::vector<step> steps;
};

/* Throws text::file_error (text/toml_reader.h) when the file cannot be read or anything in it is wrong. */
test_plan read_plan(const std::string &path);

/* Whether the front panel has the port. */
bool has_port(const test_plan &plan, uint32_t port);

/* Whether the whole text matches the label's pattern. */
bool matches(const label &wanted, const std::string &text);

} // namespace plan

#endif
