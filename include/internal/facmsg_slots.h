/* SPDX-License-Identifier: MIT
 *
 * The driver slots that the library calls, each once: index, name, and which parameter says what port a call is for.
 * What has to treat all of them alike is made from this list; a slot's signature is its member's in vexa_diag_drv.
 */
#ifndef FACMSG_SLOTS_H
#define FACMSG_SLOTS_H

#include "facmsg_driver.h"

/* send_packet has its port's phy id in the pack_info. */
enum class slot_port { NONE = -1, FIRST = 0, SECOND = 1 };

#define FACMSG_SLOTS(SLOT)                    \
    SLOT(147, poe_set_port_enable, FIRST)     \
    SLOT(148, poe_get_power_state, FIRST)     \
    SLOT(149, poe_get_overload, FIRST)        \
    SLOT(150, poe_set_max_power, FIRST)       \
    SLOT(151, poe_get_power, FIRST)           \
    SLOT(152, poe_get_pd_class, FIRST)        \
    SLOT(163, get_status, SECOND)             \
    SLOT(164, set_status, SECOND)             \
    SLOT(165, get_ability, SECOND)            \
    SLOT(166, set_factory_mode, NONE)         \
    SLOT(167, get_port_phyid, FIRST)          \
    SLOT(168, set_cpu_mac_addr, NONE)         \
    SLOT(169, clear_cpu_mac_addr, NONE)       \
    SLOT(170, set_port_debug_level, NONE)     \
    SLOT(173, set_poe_debug_level, NONE)      \
    SLOT(175, send_packet, FIRST)             \
    SLOT(176, port_on_off, SECOND)            \
    SLOT(178, port_broadcast_begin, NONE)     \
    SLOT(179, port_broadcast_end, NONE)       \
    SLOT(180, get_port_fcs, SECOND)           \
    SLOT(181, port_vlan_pair, SECOND)         \
    SLOT(182, set_pvid, SECOND)               \
    SLOT(183, vlan, SECOND)                   \
    SLOT(184, vlan_static_mac, SECOND)        \
    SLOT(185, begin_end_prbs, SECOND)         \
    SLOT(186, get_clear_prbs_status, SECOND)  \
    SLOT(205, poe_get_mcu_ver, NONE)          \
    SLOT(206, poe_mcu_upg, NONE)              \
    SLOT(207, poe_get_vop_test_result, FIRST) \
    SLOT(208, port_vlan1, SECOND)             \
    SLOT(210, port_phy_loopback, SECOND)      \
    SLOT(211, port_speed_prepare, NONE)       \
    SLOT(212, get_port_type, SECOND)          \
    SLOT(213, get_port_stat, SECOND)          \
    SLOT(214, clear_port_stat, SECOND)        \
    SLOT(216, get_ex_speed_support, NONE)

#endif
