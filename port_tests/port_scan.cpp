/* SPDX-License-Identifier: MIT
 *
 * Port abilities and the list of the ports under test.
 */
#include "port_scan.h"

port_ability_row g_port_ability[FACMSG_MAX_PORTS];
uint32_t g_test_ports[FACMSG_MAX_PORTS];

const port_ability_row &read_port_ability(uint32_t unit, uint32_t port, scan_log log, const char *op)
{
    port_ability_row &row = g_port_ability[port - 1];
    const int ret = call(&drv::get_ability, unit, port, &row);
    if (ret != 0) {
        log_as(op, log.failure, "Get port%d ability fail(ret = %d).\n", static_cast<int>(port), ret);
        row = {};
    }
    if (log.abilities)
        log_as(op, LOG_TRACE, "Get port %d ability copper:0x%x fiber:0x%x .\n", static_cast<int>(port), row.copper,
               row.fiber);
    return row;
}

void add_port_numbers(uint32_t *port_results, uint32_t port_count)
{
    for (uint32_t i = 0; i < port_count; i++)
        port_results[i] |= FACMSG_PORT_RESULT(g_test_ports[i], 0);
}
