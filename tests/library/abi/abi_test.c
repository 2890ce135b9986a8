/* SPDX-License-Identifier: MIT
 *
 * The public headers in C99, on any word size: sizes that hosts without these headers expect, and a call through the
 * shared object. Where the fields of requests and replies lie stands in requests.cases.
 */
#include <stddef.h>
#include <stdio.h>

#include "facmsg.h"

static int failures;

static void check(const char *what, size_t is, size_t should_be)
{
    if (is != should_be) {
        printf("%s is %zu, should be %zu\n", what, is, should_be);
        failures++;
    }
}

/* Index of a slot. */
#define SLOT(name) (offsetof(struct vexa_diag_drv, name) / sizeof(void *))

int main(void)
{
    uint32_t states[3] = {1, 1, 1};
    platform_set_port_status(states, 2, 7);
    check("states written", states[0] == 7 && states[1] == 7 && states[2] == 1, 1);
    check("log level at load", (size_t)facmsg_dbg, 0);
    check("port_status_row.duplex", offsetof(struct port_status_row, duplex), 16);
    check("port_ability_row.fiber", offsetof(struct port_ability_row, fiber), 4);
    check("pack_info.phy_id", offsetof(struct pack_info, phy_id), 4);
    check("port_packet_req.frame_count", offsetof(struct port_packet_req, frame_count), 16);
    check("ex_speed_support.is_support_fiber_10G", offsetof(struct ex_speed_support, is_support_fiber_10G), 3);
    check("size of the driver table", sizeof(facmsg_vexa_diag_drv), 217 * sizeof(void *));
    check("first slot", SLOT(poe_set_port_enable), 147);
    check("last slot", SLOT(get_ex_speed_support), 216);
    return failures != 0;
}
