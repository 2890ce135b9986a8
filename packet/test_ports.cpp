/* SPDX-License-Identifier: MIT
 *
 * Port abilities, the list of the ports under test, and the calls that go to all of them.
 */
#include "test_ports.h"

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

bool has_any_ability(const port_ability_row &row)
{
    return (row.copper | row.fiber) != 0;
}

bool test_supported(bool slots, const char *op)
{
    if (!slots)
        log_as(op, LOG_ERROR, "Port test no support(interface is NULL).\n");
    return slots;
}

void switch_ports(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t on)
{
    for (uint32_t i = 0; i < count; i++)
        call(&drv::port_on_off, unit, ports[i], on);
}

int platform_get_port_link(uint32_t unit, port_status_row *rows, uint32_t *states, const uint32_t *ports, int count)
{
    int result = 0;
    for (int i = 0; i < count; i++) {
        if (call(&drv::get_status, unit, ports[i], &rows[i]) != 0) {
            log_error("Get port(%d) link status fail.\n", static_cast<int>(ports[i]));
            states[i] = FACMSG_PORT_NOT_STARTED;
        } else {
            states[i] = rows[i].link == 0 ? FACMSG_PORT_NO_LINK : FACMSG_PORT_OK;
        }
        if (states[i] != FACMSG_PORT_OK)
            result = -1;
    }
    return result;
}

void platform_set_port_status(uint32_t *states, int count, uint32_t value)
{
    for (int i = 0; i < count; i++)
        states[i] = value;
}

bool get_phy_id(uint32_t port, void *record, const char *op)
{
    if (call(&drv::get_port_phyid, port, record) == 0)
        return true;
    log_as(op, LOG_ERROR, "port(%d) get port phyid fail.\n", static_cast<int>(port));
    return false;
}

void add_port_numbers(uint32_t *port_results, uint32_t port_count)
{
    for (uint32_t i = 0; i < port_count; i++)
        port_results[i] |= FACMSG_PORT_RESULT(g_test_ports[i], 0);
}
