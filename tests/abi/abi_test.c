/* SPDX-License-Identifier: MIT
 *
 * The public headers in C99: records have the sizes that hosts and stations without them expect, and a call
 * through the shared object works.
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

#define SIZE(type, bytes) check("size of " #type, sizeof(struct type), bytes)
#define OFFSET(type, field, bytes) check(#type "." #field, offsetof(struct type, field), bytes)

static void check_records(void)
{
    SIZE(facmsg_header, 8);
    SIZE(facmsg_request, 8);
    SIZE(port_status_row, 24);
    OFFSET(port_status_row, speed, 8);
    OFFSET(port_status_row, medium, 12);
    SIZE(port_ability_row, 8);
    SIZE(pack_info, 8);
    OFFSET(pack_info, phy_id, 4);
    SIZE(port_packet_req, 20);
    OFFSET(port_packet_req, count, 12);
    SIZE(debug_level_record, 8);
    SIZE(packet_test_record, 1052);
    OFFSET(packet_test_record, any_speed, 8);
    OFFSET(packet_test_record, medium, 20);
    OFFSET(packet_test_record, port_results, 28);
    SIZE(switch_test_record, 1040);
    SIZE(broadcast_test_record, 3088);
    SIZE(fpga_record, 84);
    SIZE(poe_test_reply, 2828);
    SIZE(poe_mcu_ver_reply, 12);
    SIZE(vop_test_reply, 2316);
    SIZE(flow_pressure_reply, 2340);
    SIZE(ess_flow_reply, 3860);
    SIZE(serpentine_flow_reply, 4120);
    SIZE(prbs_test_reply, 1040);
}

int main(void)
{
    uint32_t states[3] = {1, 1, 1};
    platform_set_port_status(states, 2, 7);
    check("states written", states[0] == 7 && states[1] == 7 && states[2] == 1, 1);
    check("log level at load", (size_t)facmsg_dbg, 0);
    check_records();
    check("size of the driver table", sizeof(facmsg_vexa_diag_drv), 217 * sizeof(void *));
    check("last slot", offsetof(struct vexa_diag_drv, get_ex_speed_support), 216 * sizeof(void *));
    return failures != 0;
}
