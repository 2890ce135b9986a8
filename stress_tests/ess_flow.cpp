/* SPDX-License-Identifier: MIT
 *
 * Traffic stress in pairs: each pair's frames circulate in a VLAN of its own, with every PHY in loopback.
 */
#include <cstddef>
#include <unistd.h>

#include "ess_test.h"
#include "stress_senders.h"
#include "stress_stat.h"
#include "stress_vlan.h"

static_assert(sizeof(ess_flow_reply) == 3860);
static_assert(offsetof(ess_flow_reply, speed_codes) == 16 && offsetof(ess_flow_reply, port_down) == 19);
static_assert(offsetof(ess_flow_reply, port_fcs_err) == 275 && offsetof(ess_flow_reply, port_cnt_err) == 531);
static_assert(offsetof(ess_flow_reply, in_pkts) == 788 && offsetof(ess_flow_reply, fcs) == 2836);

static bool circulate_frames(const ess_run &run)
{
    return ess_carry_traffic(
        run, [&](uint8_t enable) { return vexa_ess_port_vlan(run.unit, run.ports, run.count, enable); },
        [&] { return vexa_send_ess_packet_pressure_use_cpsp(run.ports, run.count); }, TRAFFIC_S);
}

static bool run_pass(const ess_run &run, ess_flow_reply *reply)
{
    reply->unit = run.unit;
    reply->port_count = run.count;
    if (!ess_prepare_ports(run) || !circulate_frames(run))
        return false;
    if (!ess_set_loopback(run, 1))
        return ess_stopped(run, FACMSG_STAGE_LOOPBACK_RESTORE);
    sleep(COUNTER_SETTLE_S);
    if (vexa_ess_port_stat(run.unit, run.ports, run.count, reply) != 0) {
        log_as(run.op, LOG_TRACE, "vexa_ess_port_stat failed.\n");
        reply->fail_stage = FACMSG_STAGE_STATISTICS;
    }
    dump_err_ports(reply);
    return true;
}

static void test_flow(ess_flow_reply *reply, const char *op)
{
    if (!ess_supported("flow pressure", slots_filled(&drv::port_vlan_pair), op)) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return;
    }
    const uint32_t unit = reply->unit;
    const uint32_t count = list_stress_ports(unit, op);
    if (count == 0) {
        log_as(op, LOG_ERROR, "No support flow pressure for testing.\n");
        reply->result = FACMSG_STRESS_NO_PORT;
        return;
    }
    const ess_run run = {op,
                         unit,
                         g_test_ports,
                         count,
                         ess_set_loopback,
                         1,
                         &reply->result,
                         &reply->fail_stage,
                         &reply->speed_codes,
                         reply->port_down};
    ess_repeat(reply, [&] { return run_pass(run, reply); });
}

int facmsg_ess_flow_pressure_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<ess_flow_reply>(request);
    test_flow(reply, __func__);
    return send_reply(fd, FACMSG_ESS_FLOW, reply);
}
