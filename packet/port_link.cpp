/* SPDX-License-Identifier: MIT
 *
 * Link states of a list of ports, and the filling of state arrays.
 */
#include "port_link.h"

#include "facmsg_internal.h"

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
