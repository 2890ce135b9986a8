/* SPDX-License-Identifier: MIT
 *
 * The dispatcher, and the requests that control the service itself.
 */
#include <cstdlib>
#include <unistd.h>

#include "facmsg_internal.h"

static_assert(sizeof(debug_level_record) == 8);
static_assert(sizeof(enter_factory_record) == 4);

int32_t facmsg_dbg;

/* Removed while any debug output is on, there while all are off. What it tells other software is the switch's affair.
 */
#define MARKER_FILE "/tmp/proxy/defout/ssa_process"

static uint32_t msg_debug_on;
static uint32_t port_debug_on;
static uint32_t poe_debug_on;

static void set_debug_flag(uint32_t &flag, int32_t level)
{
    flag = level != 0;
    if (flag) {
        unlink(MARKER_FILE);
        return;
    }
    if (!msg_debug_on && !port_debug_on && !poe_debug_on) [[maybe_unused]]
        const int never_fails_a_request = system("touch " MARKER_FILE);
}

int facmsg_msg_debug_fun(int fd, facmsg_request *request)
{
    const auto record = payload_of<debug_level_record>(request);
    std::atomic_ref(facmsg_dbg).store(record->level, std::memory_order_relaxed);
    set_debug_flag(msg_debug_on, record->level);
    log_trace("Set facmsg_dbg level to %d.\n", record->level);
    record->status = 0;
    return send_reply(fd, FACMSG_MSG_DEBUG, record);
}

/* Both driver levels are answered with the port level's type. */
static int set_driver_level(int fd, facmsg_request *request, int (*drv::*set_level)(int32_t), uint32_t &flag,
                            const char *op)
{
    const auto record = payload_of<debug_level_record>(request);
    if (call(set_level, record->level) == 0) {
        log_as(op, LOG_TRACE, "Set port level to %d.\n", record->level);
        record->status = 0;
        set_debug_flag(flag, record->level);
    } else {
        log_as(op, LOG_ERROR, "Set port level to %d fail.\n", record->level);
        record->status = -1;
    }
    return send_reply(fd, FACMSG_PORT_DEBUG, record);
}

int facmsg_port_debug_fun(int fd, facmsg_request *request)
{
    return set_driver_level(fd, request, &drv::set_port_debug_level, port_debug_on, __func__);
}

int facmsg_poe_debug_fun(int fd, facmsg_request *request)
{
    return set_driver_level(fd, request, &drv::set_poe_debug_level, poe_debug_on, __func__);
}

int facmsg_enter_factory_fun(int fd, facmsg_request *request)
{
    const auto record = payload_of<enter_factory_record>(request);
    record->status = -1;
    if (call(&drv::set_factory_mode) == 0) {
        log_trace("Set factory mode ok.\n");
        record->status = 0;
    }
    return send_reply(fd, FACMSG_ENTER_FACTORY, record);
}

static const struct {
    uint32_t type;
    int (*handler)(int fd, facmsg_request *request);
} REQUESTS[] = {
    {FACMSG_PACKET_TEST, facmsg_packet_test_fun},
    {FACMSG_1G_10G_SWITCH, facmsg_1g_10g_switch_fun},
    {FACMSG_10G_40G_SWITCH, facmsg_10g_40g_switch_fun},
    {FACMSG_FC_ETHER_SWITCH, facmsg_fc_ether_switch_fun},
    {FACMSG_COPPER_FIBER_SWITCH, facmsg_copper_fiber_switch_fun},
    {FACMSG_PORT_BROADCAST, facmsg_port_broadcast_fun},
    {FACMSG_PORT_POE, facmsg_port_poe_fun},
    {FACMSG_MSG_DEBUG, facmsg_msg_debug_fun},
    {FACMSG_POE_DEBUG, facmsg_poe_debug_fun},
    {FACMSG_PORT_DEBUG, facmsg_port_debug_fun},
    {FACMSG_ENTER_FACTORY, facmsg_enter_factory_fun},
    {FACMSG_FPGA_WRITE, facmsg_fpga_write_fun},
    {FACMSG_FPGA_READ, facmsg_fpga_read_fun},
    {FACMSG_PORT_HPOE, facmsg_port_hpoe_fun},
    {FACMSG_PBOX_HPOE, facmsg_pbox_hpoe_fun},
    {FACMSG_POE_MCU_UPGRADE, facmsg_poe_mcu_upg_fun},
    {FACMSG_POE_MCU_VERSION, facmsg_poe_mcu_ver_get_fun},
    {FACMSG_POE_VOP, facmsg_poe_vop_fun},
    {FACMSG_PBOX_PACKET_TEST, facmsg_pbox_packet_test_fun},
    {FACMSG_ESS_FLOW, facmsg_ess_flow_pressure_fun},
    {FACMSG_ESS_BC_FLOW, facmsg_ess_bc_flow_pressure_fun},
    {FACMSG_ESS_SERPENTINE, facmsg_ess_serpentine_flow_fun},
    {FACMSG_ESS_SFI_PRBS, facmsg_ess_sfi_prbs_fun},
};

int facmsg_lib_test_main(int fd, facmsg_request *request)
{
    if (request == nullptr) {
        log_error("Invalid pram--info.\n");
        return -1;
    }
    for (const auto &row : REQUESTS)
        if (row.type == request->header.srv_type)
            return row.handler(fd, request);
    log_error("Invalid srv_type(%d).\n", static_cast<int>(request->header.srv_type));
    return facmsg_send(fd, FACMSG_REPLY_UNKNOWN, 0, nullptr);
}
