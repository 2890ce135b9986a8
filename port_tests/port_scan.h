/* SPDX-License-Identifier: MIT
 *
 * Which ports a test runs on: every test asks ports 1 to 256 for their abilities and lists those that match.
 */
#ifndef PORT_TESTS_PORT_SCAN_H
#define PORT_TESTS_PORT_SCAN_H

#include "facmsg_internal.h"

/* What a scan writes to the log besides. */
struct scan_log {
    log_level failure; /* level of the line for a port that cannot be asked */
    bool abilities;    /* trace every port's ability words */
};
constexpr scan_log QUIET_SCAN = {LOG_TRACE, false};
constexpr scan_log TRACED_SCAN = {LOG_TRACE, true};
constexpr scan_log STRESS_SCAN = {LOG_ERROR, true};

/* Reads a port's abilities into its row of g_port_ability; a port that cannot be asked can do nothing. */
const port_ability_row &read_port_ability(uint32_t unit, uint32_t port, scan_log log, const char *op);

/* Refills g_port_ability and lists in g_test_ports, ascending, the ports whose abilities match: from entry `count` on,
 * for a list of several scans. Returns the new number of entries; a full list takes no more. */
template <class Matches>
uint32_t list_ports(uint32_t unit, scan_log log, Matches matches, const char *op, uint32_t count = 0)
{
    for (uint32_t port = 1; port <= FACMSG_MAX_PORTS; port++)
        if (matches(read_port_ability(unit, port, log, op)) && count < FACMSG_MAX_PORTS)
            g_test_ports[count++] = port;
    return count;
}

/* Completes the reply's words: the port number beside each code. */
void add_port_numbers(uint32_t *port_results, uint32_t port_count);

#endif
