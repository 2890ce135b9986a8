/* SPDX-License-Identifier: MIT
 *
 * The public headers in C99, on any word size: records and the driver table have the layout that hosts and stations
 * without these headers expect, and a call through the shared object works.
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

static const struct layout {
    const char *name;
    size_t offset, expected_offset;
    size_t size, expected_size;
} layouts[] = {
/* clang-format off */
#define SIZE(type, bytes) {"struct " #type, 0, 0, sizeof(struct type), bytes}
#define FIELD(type, field, at, bytes) \
    {#type "." #field, offsetof(struct type, field), at, sizeof(((struct type *)NULL)->field), bytes}
    /* clang-format on */
    SIZE(port_status_row, 24),
    FIELD(port_status_row, host_word_0, 0, 4),
    FIELD(port_status_row, link, 4, 4),
    FIELD(port_status_row, speed, 8, 4),
    FIELD(port_status_row, medium, 12, 4),
    FIELD(port_status_row, duplex, 16, 4),
    FIELD(port_status_row, host_word_5, 20, 4),
    SIZE(port_ability_row, 8),
    FIELD(port_ability_row, copper, 0, 4),
    FIELD(port_ability_row, fiber, 4, 4),
    SIZE(pack_info, 8),
    FIELD(pack_info, zero, 0, 2),
    FIELD(pack_info, tx_selector, 2, 2),
    FIELD(pack_info, phy_id, 4, 4),
    SIZE(port_packet_req, 20),
    FIELD(port_packet_req, phy_id, 0, 4),
    FIELD(port_packet_req, tx_selector, 4, 4),
    FIELD(port_packet_req, mode, 8, 4),
    FIELD(port_packet_req, count, 12, 4),
    FIELD(port_packet_req, frame_count, 16, 4),
    SIZE(ex_speed_support, 4),
    FIELD(ex_speed_support, is_support_ex_speed, 0, 1),
    FIELD(ex_speed_support, is_support_ex_5G, 1, 1),
    FIELD(ex_speed_support, is_support_ex_2500M, 2, 1),
    FIELD(ex_speed_support, is_support_fiber_10G, 3, 1),
    SIZE(facmsg_header, 8),
    FIELD(facmsg_header, srv_type, 0, 4),
    FIELD(facmsg_header, payload_size, 4, 4),
    SIZE(facmsg_request, 8),
    FIELD(facmsg_request, header, 0, 8),
    SIZE(debug_level_record, 8),
    FIELD(debug_level_record, level, 0, 4),
    FIELD(debug_level_record, status, 4, 4),
    SIZE(enter_factory_record, 4),
    FIELD(enter_factory_record, status, 0, 4),
    SIZE(packet_test_record, 1052),
    FIELD(packet_test_record, result, 0, 4),
    FIELD(packet_test_record, unit, 4, 4),
    FIELD(packet_test_record, any_speed, 8, 4),
    FIELD(packet_test_record, speed, 12, 4),
    FIELD(packet_test_record, duplex, 16, 4),
    FIELD(packet_test_record, medium, 20, 4),
    FIELD(packet_test_record, port_count, 24, 4),
    FIELD(packet_test_record, port_results, 28, 1024),
    SIZE(switch_test_record, 1040),
    FIELD(switch_test_record, result, 0, 4),
    FIELD(switch_test_record, unit, 4, 4),
    FIELD(switch_test_record, setting, 8, 4),
    FIELD(switch_test_record, port_count, 12, 4),
    FIELD(switch_test_record, port_results, 16, 1024),
    SIZE(broadcast_test_record, 3088),
    FIELD(broadcast_test_record, result, 0, 4),
    FIELD(broadcast_test_record, unit, 4, 4),
    FIELD(broadcast_test_record, port_count, 8, 4),
    FIELD(broadcast_test_record, port_results, 12, 1024),
    FIELD(broadcast_test_record, reserved, 1036, 4),
    FIELD(broadcast_test_record, fcs_counts, 1040, 2048),
    SIZE(fpga_record, 84),
    FIELD(fpga_record, result, 0, 4),
    FIELD(fpga_record, fpga_port, 4, 4),
    FIELD(fpga_record, addr, 8, 4),
    FIELD(fpga_record, len, 12, 4),
    FIELD(fpga_record, product_id, 16, 4),
    FIELD(fpga_record, data, 20, 64),
    SIZE(poe_test_reply, 2828),
    FIELD(poe_test_reply, result, 0, 4),
    FIELD(poe_test_reply, unit, 4, 4),
    FIELD(poe_test_reply, port_count, 8, 4),
    FIELD(poe_test_reply, ports, 12, 256),
    FIELD(poe_test_reply, state_code, 268, 1024),
    FIELD(poe_test_reply, pd_class, 1292, 256),
    FIELD(poe_test_reply, overload_code, 1548, 1024),
    FIELD(poe_test_reply, power_off_code, 2572, 256),
    SIZE(poe_mcu_upgrade_reply, 4),
    FIELD(poe_mcu_upgrade_reply, result, 0, 4),
    SIZE(poe_mcu_ver_reply, 12),
    FIELD(poe_mcu_ver_reply, result, 0, 4),
    FIELD(poe_mcu_ver_reply, new_ver, 4, 4),
    FIELD(poe_mcu_ver_reply, cur_ver, 8, 4),
    SIZE(vop_test_reply, 2316),
    FIELD(vop_test_reply, result, 0, 4),
    FIELD(vop_test_reply, unit, 4, 4),
    FIELD(vop_test_reply, port_count, 8, 4),
    FIELD(vop_test_reply, ports, 12, 256),
    FIELD(vop_test_reply, vop_status, 268, 1024),
    FIELD(vop_test_reply, vop_value, 1292, 1024),
    SIZE(speed_choice, 3),
    FIELD(speed_choice, copper, 0, 1),
    FIELD(speed_choice, ex_copper, 1, 1),
    FIELD(speed_choice, fiber, 2, 1),
    SIZE(flow_pressure_reply, 2340),
    FIELD(flow_pressure_reply, result, 0, 4),
    FIELD(flow_pressure_reply, unit, 4, 4),
    FIELD(flow_pressure_reply, port_count, 8, 4),
    FIELD(flow_pressure_reply, fail_stage, 12, 12),
    FIELD(flow_pressure_reply, speed_codes, 24, 9),
    FIELD(flow_pressure_reply, port_down, 33, 768),
    FIELD(flow_pressure_reply, port_fcs_err, 801, 768),
    FIELD(flow_pressure_reply, port_cnt_err, 1569, 768),
    FIELD(flow_pressure_reply, reserved, 2337, 3),
    SIZE(ess_flow_reply, 3860),
    FIELD(ess_flow_reply, result, 0, 4),
    FIELD(ess_flow_reply, unit, 4, 4),
    FIELD(ess_flow_reply, port_count, 8, 4),
    FIELD(ess_flow_reply, fail_stage, 12, 4),
    FIELD(ess_flow_reply, speed_codes, 16, 3),
    FIELD(ess_flow_reply, port_down, 19, 256),
    FIELD(ess_flow_reply, port_fcs_err, 275, 256),
    FIELD(ess_flow_reply, port_cnt_err, 531, 256),
    FIELD(ess_flow_reply, reserved, 787, 1),
    FIELD(ess_flow_reply, in_pkts, 788, 1024),
    FIELD(ess_flow_reply, ex_pkts, 1812, 1024),
    FIELD(ess_flow_reply, fcs, 2836, 1024),
    SIZE(serpentine_flow_reply, 4120),
    FIELD(serpentine_flow_reply, result, 0, 4),
    FIELD(serpentine_flow_reply, unit, 4, 4),
    FIELD(serpentine_flow_reply, port_count, 8, 4),
    FIELD(serpentine_flow_reply, fail_stage, 12, 4),
    FIELD(serpentine_flow_reply, cpu_send_cnt, 16, 4),
    FIELD(serpentine_flow_reply, speed_codes, 20, 3),
    FIELD(serpentine_flow_reply, port_down, 23, 256),
    FIELD(serpentine_flow_reply, port_ex_err, 279, 256),
    FIELD(serpentine_flow_reply, port_in_err, 535, 256),
    FIELD(serpentine_flow_reply, port_fcs_err, 791, 256),
    FIELD(serpentine_flow_reply, reserved, 1047, 1),
    FIELD(serpentine_flow_reply, in_pkts, 1048, 1024),
    FIELD(serpentine_flow_reply, ex_pkts, 2072, 1024),
    FIELD(serpentine_flow_reply, fcs, 3096, 1024),
    SIZE(prbs_test_reply, 1040),
    FIELD(prbs_test_reply, result, 0, 4),
    FIELD(prbs_test_reply, unit, 4, 4),
    FIELD(prbs_test_reply, port_count, 8, 4),
    FIELD(prbs_test_reply, fail_stage, 12, 4),
    FIELD(prbs_test_reply, prbs_status, 16, 1024),
#undef SIZE
#undef FIELD
};

static void check_layouts(void)
{
    for (size_t i = 0; i < sizeof(layouts) / sizeof(*layouts); i++) {
        const struct layout *found = &layouts[i];
        if (found->offset == found->expected_offset && found->size == found->expected_size)
            continue;
        printf("%s: %zu bytes at %zu, should be %zu at %zu\n", found->name, found->size, found->offset,
               found->expected_size, found->expected_offset);
        failures++;
    }
}

/* Index of a slot. */
#define SLOT(name) (offsetof(struct vexa_diag_drv, name) / sizeof(void *))

static void check_driver_table(void)
{
    check("size of the driver table", sizeof(facmsg_vexa_diag_drv), 217 * sizeof(void *));
    check("size of the driver table in bytes", sizeof(struct vexa_diag_drv), sizeof(void *) == 4 ? 868 : 1736);
    check("first slot", SLOT(poe_set_port_enable), 147);
    check("last slot", SLOT(get_ex_speed_support), 216);
}

int main(void)
{
    uint32_t states[3] = {1, 1, 1};
    platform_set_port_status(states, 2, 7);
    check("states written", states[0] == 7 && states[1] == 7 && states[2] == 1, 1);
    check("log level at load", (size_t)facmsg_dbg, 0);
    check_layouts();
    check_driver_table();
    return failures != 0;
}
