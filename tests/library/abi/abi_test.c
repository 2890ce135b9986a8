/* SPDX-License-Identifier: MIT
 *
 * The public headers in C99, on any word size: sizes that hosts without these headers expect, and a call through the
 * shared object. Where the fields of requests, replies and the driver's records lie, the stories tell.
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

int main(void)
{
    uint32_t states[3] = {1, 1, 1};
    platform_set_port_status(states, 2, 7);
    check("states written", states[0] == 7 && states[1] == 7 && states[2] == 1, 1);
    check("log level at load", (size_t)facmsg_dbg, 0);
    check("pack_info.phy_id", offsetof(struct pack_info, phy_id), 4);
    check("size of the driver table", sizeof(facmsg_vexa_diag_drv), 217 * sizeof(void *));
    return failures != 0;
}
