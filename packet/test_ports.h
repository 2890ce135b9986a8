/* SPDX-License-Identifier: MIT
 *
 * The ports under test: which they are, and what every family of tests asks of them. A list of ports is `count` port
 * numbers, 1 to FACMSG_MAX_PORTS, at most as many; an array beside it has an entry for each, in the same order.
 *
 * All of it runs on the thread that runs a request, and works on the two tables of facmsg_internal.h, which the next
 * request overwrites. `op` is the operation in whose name a line is logged.
 */
#ifndef PACKET_TEST_PORTS_H
#define PACKET_TEST_PORTS_H

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

/* For list_ports: every port that there is. */
bool has_any_ability(const port_ability_row &row);

/* Passes on whether the slots that a test needs are filled; an error line says that it is not supported otherwise. */
bool test_supported(bool slots, const char *op);

/* Enables (1) or disables (0) every port; what the driver returns is ignored, and so is that it cannot. */
void switch_ports(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t on);

/* Reads every port's status into rows[i] and sets states[i] to a facmsg_port_code: OK (link up), NO_LINK, or
 * NOT_STARTED after an error line (unreadable; the row is as the driver left it). 0 when every link is up, else -1. */
int platform_get_port_link(uint32_t unit, port_status_row *rows, uint32_t *states, const uint32_t *ports, int count);

/* Has the driver write the port's phy id into the first word of *record. False after an error line when it fails. */
bool get_phy_id(uint32_t port, void *record, const char *op);

/* Completes a reply's words for the ports in g_test_ports: the port number in the upper half beside each code. */
void add_port_numbers(uint32_t *port_results, uint32_t port_count);

#endif
