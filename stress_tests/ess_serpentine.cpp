/* SPDX-License-Identifier: MIT
 *
 * Traffic stress through a chain of all ports: what the CPU sends into the first passes every port once and has to
 * reach the CPU from the last.
 */
#include <cstddef>
#include <unistd.h>

#include "ess_test.h"
#include "stress_senders.h"
#include "stress_stat.h"
#include "stress_vlan.h"

static_assert(sizeof(serpentine_flow_reply) == 4120);
static_assert(offsetof(serpentine_flow_reply, cpu_send_cnt) == 16 && offsetof(serpentine_flow_reply, port_down) == 23);
static_assert(offsetof(serpentine_flow_reply, port_ex_err) == 279 && offsetof(serpentine_flow_reply, in_pkts) == 1048);
static_assert(offsetof(serpentine_flow_reply, ex_pkts) == 2072 && offsetof(serpentine_flow_reply, fcs) == 3096);

constexpr unsigned DRAIN_S = 1; /* for the last frames to get through the chain */

/* Sends from the CPU and notes how many frames; 0 on success. */
static int send_from_cpu(const ess_run &run, serpentine_flow_reply *reply)
{
    uint32_t sent = 0;
    const int ret = vexa_send_ess_serpentine_flow_use_cpsp(run.ports, run.count, &sent);
    if (ret == 0) {
        log_as(run.op, LOG_TRACE, "cpu_send_cnt=%d\n", static_cast<int>(sent));
        reply->cpu_send_cnt = sent;
    }
    return ret;
}

static bool send_through_chain(const ess_run &run, serpentine_flow_reply *reply)
{
    return ess_carry_traffic(
        run, [&](uint8_t enable) { return vexa_ess_serpentine_vlan(run.unit, run.ports, run.count, enable); },
        [&] { return send_from_cpu(run, reply); }, DRAIN_S);
}

static bool run_pass(const ess_run &run, serpentine_flow_reply *reply)
{
    const uint32_t last_port = run.ports[run.count - 1];
    uint32_t received = 0;
    reply->unit = run.unit;
    reply->port_count = run.count;
    if (!ess_prepare_ports(run))
        return false;
    vexa_ess_serpentine_cpu_recv_packet(last_port, &received);
    if (!send_through_chain(run, reply))
        return false;
    if (!ess_set_loopback(run, 1))
        return ess_stopped(run, FACMSG_STAGE_LOOPBACK_RESTORE);
    sleep(COUNTER_SETTLE_S);
    vexa_ess_serpentine_cpu_recv_packet(last_port, &received);
    log_as(run.op, LOG_TRACE, "CPU recv cnt:%lu.\n", static_cast<unsigned long>(received));
    if (reply->cpu_send_cnt != received)
        reply->fail_stage = FACMSG_STAGE_STATISTICS;
    if (vexa_ess_serpentine_port_stat(run.unit, run.ports, run.count, reply->cpu_send_cnt, reply) != 0)
        reply->fail_stage = FACMSG_STAGE_STATISTICS;
    return true;
}

static void test_serpentine(serpentine_flow_reply *reply, const char *op)
{
    const bool own_functions = slots_filled(&drv::port_vlan_pair, &drv::set_pvid, &drv::vlan_static_mac);
    if (!ess_supported("serpentine flow test", own_functions, op)) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return;
    }
    const uint32_t unit = reply->unit;
    const uint32_t count = list_stress_ports(unit, op);
    if (count == 0) {
        log_as(op, LOG_ERROR, "No port for serpentine flow testing.\n");
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

int facmsg_ess_serpentine_flow_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<serpentine_flow_reply>(request);
    test_serpentine(reply, __func__);
    return send_reply(fd, FACMSG_ESS_SERPENTINE, reply);
}
