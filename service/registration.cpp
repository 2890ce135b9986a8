/* SPDX-License-Identifier: MIT
 *
 * The driver table and its registration, which starts the service.
 */
#include <cstddef>
#include <cstring>

#include "facmsg_internal.h"
#include "server_lib.h"

#define SLOT_AT(index, name) static_assert(offsetof(vexa_diag_drv, name) == (index) * sizeof(void *))
SLOT_AT(147, poe_set_port_enable);
SLOT_AT(148, poe_get_power_state);
SLOT_AT(149, poe_get_overload);
SLOT_AT(150, poe_set_max_power);
SLOT_AT(151, poe_get_power);
SLOT_AT(152, poe_get_pd_class);
SLOT_AT(163, get_status);
SLOT_AT(164, set_status);
SLOT_AT(165, get_ability);
SLOT_AT(166, set_factory_mode);
SLOT_AT(167, get_port_phyid);
SLOT_AT(168, set_cpu_mac_addr);
SLOT_AT(169, clear_cpu_mac_addr);
SLOT_AT(170, set_port_debug_level);
SLOT_AT(173, set_poe_debug_level);
SLOT_AT(175, send_packet);
SLOT_AT(176, port_on_off);
SLOT_AT(178, port_broadcast_begin);
SLOT_AT(179, port_broadcast_end);
SLOT_AT(180, get_port_fcs);
SLOT_AT(181, port_vlan_pair);
SLOT_AT(182, set_pvid);
SLOT_AT(183, vlan);
SLOT_AT(184, vlan_static_mac);
SLOT_AT(185, begin_end_prbs);
SLOT_AT(186, get_clear_prbs_status);
SLOT_AT(205, poe_get_mcu_ver);
SLOT_AT(206, poe_mcu_upg);
SLOT_AT(207, poe_get_vop_test_result);
SLOT_AT(208, port_vlan1);
SLOT_AT(210, port_phy_loopback);
SLOT_AT(211, port_speed_prepare);
SLOT_AT(212, get_port_type);
SLOT_AT(213, get_port_stat);
SLOT_AT(214, clear_port_stat);
SLOT_AT(216, get_ex_speed_support);
static_assert(sizeof(vexa_diag_drv) == FACMSG_DRV_SLOTS * sizeof(void *));

/* Packed for the host's sake; here it lies aligned, so that a slot can be read and written whole while the server runs.
 */
alignas(void *) vexa_diag_drv facmsg_vexa_diag_drv;

static bool facmsg_server_started;

/* Any slot, whatever the type of its function. */
typedef vexa_reserved_slot any_slot __attribute__((may_alias));

static any_slot &library_slot(size_t index)
{
    return reinterpret_cast<any_slot *>(&facmsg_vexa_diag_drv)[index];
}

/* The caller's table may lie at any address. */
static vexa_reserved_slot caller_slot(const vexa_diag_drv *table, size_t index)
{
    vexa_reserved_slot function;
    memcpy(&function, reinterpret_cast<const uint8_t *>(table) + index * sizeof(function), sizeof(function));
    return function;
}

static int start_server()
{
    if (facmsg_server_started)
        return 0;
    memset(static_cast<void *>(&facmsg_vexa_diag_drv), 0, sizeof(facmsg_vexa_diag_drv));
    if (facmsg_server_init() != 0)
        return -1;
    facmsg_server_started = true;
    return 0;
}

int vexa_ssa_regitser_interface(const vexa_diag_drv *table)
{
    if (table == nullptr) {
        log_error("Invalid vexa diag drv.\n");
        return -1;
    }
    if (start_server() != 0) {
        log_error("Factory server init fail.\n");
        return -1;
    }
    for (size_t index = 0; index < FACMSG_DRV_SLOTS; index++) {
        any_slot function = caller_slot(table, index);
        if (function == nullptr)
            continue;
        if (__atomic_load_n(&library_slot(index), __ATOMIC_RELAXED) == nullptr)
            __atomic_store(&library_slot(index), &function, __ATOMIC_RELEASE);
        else
            log_error("this interface has been mounted, offset:%d\r\n", static_cast<int>(index));
    }
    return 0;
}

int vexa_tx_packet_init(int (*send_packet)(const pack_info *info, const uint8_t *frame, uint32_t length))
{
    vexa_diag_drv table = {};
    table.send_packet = send_packet;
    return vexa_ssa_regitser_interface(&table);
}
