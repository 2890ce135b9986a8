/* SPDX-License-Identifier: MIT
 *
 * What the tests of ports share: tables of codes with a sentence each, port lists that cannot be trusted, and the
 * verdict on the unit.
 */
#ifndef STATION_PORT_REPORT_H
#define STATION_PORT_REPORT_H

#include "command.h"

namespace station
{

/* What a code says: what was measured and what was expected, or nothing for a pass. {} shows the upper half of the
 * word; codes without it have none. */
struct code_sentence {
    uint32_t code;
    const char *sentence;
};
using code_table = std::span<const code_sentence>;

/* Adds a check; unless it passed, it adds to the port's verdict and reason. */
void add_check(port_outcome &port, const char *name, verdict of, const std::string &reason = "");
/* Adds a check and what its code, which stands in the column, says of it. */
void judge_code(port_outcome &port, const char *name, code_table table, uint32_t word, const char *column);
/* Adds a check that failed by the station's own judgement, with which the service need not agree. */
void fail_here(port_outcome &port, const char *name, const std::string &reason);
/* Lists a check that was not made; why the port is not tested is said elsewhere. */
void list_untested(port_outcome &port, const char *name);

/* Why a result word allows no verdict, or nothing for the results that have no sentence in the table. */
std::string find_obstacle(code_table results, uint32_t result);

/* Why a count of ports cannot be true, or nothing. */
std::string find_wrong_count(uint32_t port_count);
/* Why a list of ports cannot be true, or nothing: each of its runs ascends from 1 to 256. */
std::string find_wrong_port(const std::vector<uint32_t> &ports, int runs = 1);
/* The ports of FACMSG_PORT_RESULT words, and those of a list of low bytes, in which 0 is port 256. */
std::vector<uint32_t> ports_of_words(const uint32_t *words, uint32_t count);
std::vector<uint32_t> ports_of_bytes(const uint8_t *bytes, uint32_t count);

/* The verdict on the unit and its summary, from the ports' verdicts and from the word by which the service reports a
 * pass or a failure; they must agree. unexplained says what a failure without a failed port can mean. */
void judge_unit(outcome &unit, const std::string &word, bool reported_pass, const std::string &unexplained);

/* Names of speed codes, and of the media. */
extern const std::span<const choice> SPEED_NAMES;
extern const std::span<const choice> MEDIUM_NAMES;

} // namespace station

#endif
