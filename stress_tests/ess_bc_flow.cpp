/* SPDX-License-Identifier: MIT
 *
 * Traffic stress by broadcast: frames from the first port flood VLAN 1, with every PHY in loopback. However it ends,
 * all ports are back in VLAN 1.
 */
#include <unistd.h>

#include "ess_test.h"
#include "phy_loopback.h"
#include "stress_senders.h"
#include "stress_stat.h"

constexpr unsigned BROKEN_HOLD_PAUSE_S = 2;

static bool set_loopback(const ess_run &run, uint8_t mode)
{
    const int ret = vexa_phy_loopback(run.unit, run.ports, run.count, mode);
    if (ret != 0)
        log_as(run.op, LOG_ERROR, "set port phy loopback fail(ret = %d).\n", ret);
    return ret == 0;
}

static bool flood_frames(const ess_run &run)
{
    return ess_carry_traffic(
        run, [&](uint32_t member) { return vexa_port_vlan1(run.unit, run.ports, run.count, member); },
        [&] { return vexa_send_ess_bc_packet_pressure_use_cpsp(run.ports, run.count); }, TRAFFIC_S);
}

static bool run_pass(const ess_run &run, ess_flow_reply *reply)
{
    reply->unit = run.unit;
    reply->port_count = run.count;
    if (!ess_prepare_ports(run) || !flood_frames(run))
        return false;
    sleep(COUNTER_SETTLE_S);
    if (vexa_ess_port_stat(run.unit, run.ports, run.count, reply) != 0) {
        log_as(run.op, LOG_TRACE, "vexa_ess_port_stat failed.\n");
        reply->fail_stage = FACMSG_STAGE_STATISTICS;
    }
    return run.set_loopback(run, 1) || ess_stopped(run, FACMSG_STAGE_LOOPBACK_RESTORE);
}

/* Returns the number of listed ports, however the test ended. */
static uint32_t test_broadcast_flow(ess_flow_reply *reply, const char *op)
{
    if (!ess_supported("flow pressure", true, op)) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return 0;
    }
    const uint32_t unit = reply->unit;
    const uint32_t count = list_stress_ports(unit, op);
    if (count == 0) {
        log_as(op, LOG_ERROR, "No support flow pressure for testing.\n");
        reply->result = FACMSG_STRESS_NO_PORT;
        return 0;
    }
    const ess_run run = {op,
                         unit,
                         g_test_ports,
                         count,
                         set_loopback,
                         BROKEN_HOLD_PAUSE_S,
                         &reply->result,
                         &reply->fail_stage,
                         &reply->speed_codes,
                         reply->port_down};
    ess_repeat(reply, [&] { return run_pass(run, reply); });
    return count;
}

int facmsg_ess_bc_flow_pressure_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<ess_flow_reply>(request);
    const uint32_t unit = reply->unit;
    const uint32_t count = test_broadcast_flow(reply, __func__);
    if (vexa_port_vlan1(unit, g_test_ports, count, 1) != 0)
        log_error("set all port forward faild.\n");
    return send_reply(fd, FACMSG_ESS_BC_FLOW, reply);
}
