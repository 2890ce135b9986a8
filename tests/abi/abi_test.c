/* SPDX-License-Identifier: MIT
 *
 * The public headers in C99: sizes and offsets of every record, the index of every driver slot, and a call through the
 * shared object.
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
#define SLOT(index, name) check("slot " #name, offsetof(struct vexa_diag_drv, name), (index) * sizeof(void *))

static void check_records(void)
{
    SIZE(facmsg_header, 8);
    OFFSET(facmsg_header, payload_size, 4);
    SIZE(facmsg_request, 8);
    SIZE(port_status_row, 24);
    OFFSET(port_status_row, link, 4);
    OFFSET(port_status_row, speed, 8);
    OFFSET(port_status_row, medium, 12);
    OFFSET(port_status_row, duplex, 16);
    SIZE(port_ability_row, 8);
    OFFSET(port_ability_row, fiber, 4);
    SIZE(pack_info, 8);
    OFFSET(pack_info, tx_selector, 2);
    OFFSET(pack_info, phy_id, 4);
    SIZE(port_packet_req, 20);
    OFFSET(port_packet_req, tx_selector, 4);
    OFFSET(port_packet_req, mode, 8);
    OFFSET(port_packet_req, count, 12);
    OFFSET(port_packet_req, frame_count, 16);
    SIZE(debug_level_record, 8);
    OFFSET(debug_level_record, status, 4);
    SIZE(enter_factory_record, 4);
    SIZE(packet_test_record, 1052);
    OFFSET(packet_test_record, unit, 4);
    OFFSET(packet_test_record, any_speed, 8);
    OFFSET(packet_test_record, speed, 12);
    OFFSET(packet_test_record, duplex, 16);
    OFFSET(packet_test_record, medium, 20);
    OFFSET(packet_test_record, port_count, 24);
    OFFSET(packet_test_record, port_results, 28);
}

static void check_slots(void)
{
    SLOT(147, poe_set_port_enable);
    SLOT(148, poe_get_power_state);
    SLOT(149, poe_get_overload);
    SLOT(150, poe_set_max_power);
    SLOT(151, poe_get_power);
    SLOT(152, poe_get_pd_class);
    SLOT(163, get_status);
    SLOT(164, set_status);
    SLOT(165, get_ability);
    SLOT(166, set_factory_mode);
    SLOT(167, get_port_phyid);
    SLOT(168, set_cpu_mac_addr);
    SLOT(169, clear_cpu_mac_addr);
    SLOT(170, set_port_debug_level);
    SLOT(173, set_poe_debug_level);
    SLOT(175, send_packet);
    SLOT(176, port_on_off);
    SLOT(178, port_broadcast_begin);
    SLOT(179, port_broadcast_end);
    SLOT(180, get_port_fcs);
    SLOT(181, port_vlan_pair);
    SLOT(182, set_pvid);
    SLOT(183, vlan);
    SLOT(184, vlan_static_mac);
    SLOT(185, begin_end_prbs);
    SLOT(186, get_clear_prbs_status);
    SLOT(205, poe_get_mcu_ver);
    SLOT(206, poe_mcu_upg);
    SLOT(207, poe_get_vop_test_result);
    SLOT(208, port_vlan1);
    SLOT(210, port_phy_loopback);
    SLOT(211, port_speed_prepare);
    SLOT(212, get_port_type);
    SLOT(213, get_port_stat);
    SLOT(214, clear_port_stat);
    SLOT(216, get_ex_speed_support);
    check("size of the driver table", sizeof(facmsg_vexa_diag_drv), 217 * sizeof(void *));
}

int main(void)
{
    uint32_t states[3] = {1, 1, 1};
    platform_set_port_status(states, 2, 7);
    check("states written", states[0] == 7 && states[1] == 7 && states[2] == 1, 1);
    check("log level at load", (size_t)facmsg_dbg, 0);
    check_records();
    check_slots();
    return failures != 0;
}
