/* SPDX-License-Identifier: MIT
 *
 * The three stress tests with every PHY in loopback: frames circulate in a VLAN for each pair of ports, flood VLAN 1,
 * or pass through a chain of all ports.
 */
#include <cstddef>
#include <cstring>
#include <unistd.h>

#include "packet/test_ports.h"
#include "stress.h"

static_assert(sizeof(ess_flow_reply) == 3860);
static_assert(offsetof(ess_flow_reply, speed_codes) == 16 && offsetof(ess_flow_reply, port_down) == 19);
static_assert(offsetof(ess_flow_reply, port_fcs_err) == 275 && offsetof(ess_flow_reply, port_cnt_err) == 531);
static_assert(offsetof(ess_flow_reply, in_pkts) == 788 && offsetof(ess_flow_reply, fcs) == 2836);
static_assert(sizeof(serpentine_flow_reply) == 4120);
static_assert(offsetof(serpentine_flow_reply, cpu_send_cnt) == 16 && offsetof(serpentine_flow_reply, port_down) == 23);
static_assert(offsetof(serpentine_flow_reply, port_ex_err) == 279 && offsetof(serpentine_flow_reply, in_pkts) == 1048);
static_assert(offsetof(serpentine_flow_reply, ex_pkts) == 2072 && offsetof(serpentine_flow_reply, fcs) == 3096);

constexpr unsigned DRAIN_S = 1; /* for the last frames to get through the chain */
constexpr unsigned FLOOD_BROKEN_HOLD_PAUSE_S = 2;

uint8_t g_first_phy_loopback;

/* ---- What the three share ---- */

/* Without ports as yet. */
template <class Reply> static stress_run run_of(Reply *reply, const char *op)
{
    return {
        op, reply->unit, g_test_ports, 0, &reply->result, &reply->fail_stage, &reply->speed_codes, reply->port_down};
}

static bool supported(const char *test_name, bool own_slots, const char *op)
{
    if (own_slots &&
        slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::port_vlan1, &drv::port_on_off,
                     &drv::port_phy_loopback, &drv::get_port_type, &drv::clear_port_stat, &drv::get_port_phyid,
                     &drv::send_packet, &drv::get_port_fcs, &drv::get_port_stat))
        return true;
    log_as(op, LOG_ERROR,
           "%s no support(get_ability:%p, get_status:%p, port_speed:%p, port_vlan1:%p, port_on_off:%p, "
           "phy_loopback:%p).\n",
           test_name, slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status),
           slot_address(&drv::port_vlan1), slot_address(&drv::port_on_off), slot_address(&drv::port_phy_loopback));
    return false;
}

/* Lists the ports with any ability. False when the test is not possible, with the reason as its result. */
static bool list_loopback_ports(stress_run &run, const char *test_name, bool own_slots, const char *no_port)
{
    if (!supported(test_name, own_slots, run.op)) {
        *run.result = FACMSG_STRESS_NOT_SUPPORTED;
        return false;
    }
    run.count = list_ports(run.unit, STRESS_SCAN, has_any_ability, run.op);
    if (run.count != 0)
        return true;
    log_as(run.op, LOG_ERROR, "%s.\n", no_port);
    *run.result = FACMSG_STRESS_NO_PORT;
    return false;
}

using loopback_setter = bool (*)(const stress_run &run, uint8_t mode);

/* Mode 0; the first time ever mode 1 and 0 again after it, which later tests need not do any more. */
static bool prepare_loopback(const stress_run &run, loopback_setter set_mode)
{
    if (!set_mode(run, 0))
        return false;
    if (g_first_phy_loopback == 1)
        return true;
    if (!set_mode(run, 1) || !set_mode(run, 0))
        return false;
    g_first_phy_loopback = 1;
    return true;
}

/* Every pass begins with this: off, fastest speeds, on, loopback, stable links, counters cleared. */
static bool prepare_ports(const stress_run &run, loopback_setter set_mode)
{
    if (!restart_at_fastest(run))
        return false;
    if (!prepare_loopback(run, set_mode))
        return stop_at(run, FACMSG_STAGE_LOOPBACK);
    if (wait_for_links(run) != link_wait::STABLE)
        return false;
    vexa_clear_port_stat(run.unit, run.ports, run.count);
    return true;
}

static bool stop_traffic(const stress_run &run, facmsg_stress_stage stage, const char *reason)
{
    log_as(run.op, LOG_ERROR, "port %s faild.\n", reason);
    return stop_at(run, stage);
}

static bool wrong_counts(const stress_run &run)
{
    return *run.fail_stage == FACMSG_STAGE_STATISTICS;
}

static void judge_ports(const stress_run &run, ess_flow_reply *reply)
{
    if (vexa_ess_port_stat(run.unit, run.ports, run.count, reply) == 0)
        return;
    log_as(run.op, LOG_TRACE, "vexa_ess_port_stat failed.\n");
    reply->fail_stage = FACMSG_STAGE_STATISTICS;
}

/* ---- Pairs ---- */

/* One pass; false when it stopped before its counts were judged. So are the other two. */
static bool pass_pairs(const stress_run &run, ess_flow_reply *reply)
{
    reply->unit = run.unit;
    reply->port_count = run.count;
    if (!prepare_ports(run, set_loopback))
        return false;
    if (vexa_ess_port_vlan(run.unit, run.ports, run.count, 1) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_SETUP, "set pvid");
    if (vexa_send_ess_packet_pressure_use_cpsp(run.ports, run.count) != 0)
        return stop_traffic(run, FACMSG_STAGE_TRANSMIT, "cpsp");
    sleep(TRAFFIC_S);
    if (vexa_ess_port_vlan(run.unit, run.ports, run.count, 0) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_REMOVAL, "cancel vlan1");
    if (!set_loopback(run, 1))
        return stop_at(run, FACMSG_STAGE_LOOPBACK_RESTORE);
    sleep(COUNTER_SETTLE_S);
    judge_ports(run, reply);
    dump_err_ports(reply);
    return true;
}

int facmsg_ess_flow_pressure_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<ess_flow_reply>(request);
    stress_run run = run_of(reply, __func__);
    if (list_loopback_ports(run, "flow pressure", slots_filled(&drv::port_vlan_pair),
                            "No support flow pressure for testing"))
        for (int pass = 1; pass_pairs(run, reply) && wrong_counts(run) && pass < MOST_PASSES; pass++)
            memset(reply, 0, sizeof(*reply));
    return send_reply(fd, FACMSG_ESS_FLOW, reply);
}

/* ---- Flood ---- */

/* This test has its own words for a refusal. */
static bool set_loopback_of_flood(const stress_run &run, uint8_t mode)
{
    const int ret = vexa_phy_loopback(run.unit, run.ports, run.count, mode);
    if (ret != 0)
        log_as(run.op, LOG_ERROR, "set port phy loopback fail(ret = %d).\n", ret);
    return ret == 0;
}

static bool pass_flood(const stress_run &run, ess_flow_reply *reply)
{
    reply->unit = run.unit;
    reply->port_count = run.count;
    if (!prepare_ports(run, set_loopback_of_flood))
        return false;
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 1) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_SETUP, "set pvid");
    if (vexa_send_ess_bc_packet_pressure_use_cpsp(run.ports, run.count) != 0)
        return stop_traffic(run, FACMSG_STAGE_TRANSMIT, "cpsp");
    sleep(TRAFFIC_S);
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 0) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_REMOVAL, "cancel vlan1");
    sleep(COUNTER_SETTLE_S);
    judge_ports(run, reply);
    return set_loopback_of_flood(run, 1) || stop_at(run, FACMSG_STAGE_LOOPBACK_RESTORE);
}

/* However it ends, all ports are back in VLAN 1. */
int facmsg_ess_bc_flow_pressure_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<ess_flow_reply>(request);
    stress_run run = run_of(reply, __func__);
    run.broken_hold_pause_s = FLOOD_BROKEN_HOLD_PAUSE_S;
    if (list_loopback_ports(run, "flow pressure", true, "No support flow pressure for testing"))
        for (int pass = 1; pass_flood(run, reply) && wrong_counts(run) && pass < MOST_PASSES; pass++)
            memset(reply, 0, sizeof(*reply));
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 1) != 0)
        log_error("set all port forward faild.\n");
    return send_reply(fd, FACMSG_ESS_BC_FLOW, reply);
}

/* ---- Serpentine ---- */

/* What the CPU sends into the first port has to pass every port once and reach the CPU from the last. */
static bool pass_serpentine(const stress_run &run, serpentine_flow_reply *reply)
{
    const uint32_t last_port = run.ports[run.count - 1];
    uint32_t recv_count = 0;
    uint32_t send_count = 0;
    reply->unit = run.unit;
    reply->port_count = run.count;
    if (!prepare_ports(run, set_loopback))
        return false;
    vexa_ess_serpentine_cpu_recv_packet(last_port, &recv_count);
    if (vexa_ess_serpentine_vlan(run.unit, run.ports, run.count, 1) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_SETUP, "set pvid");
    if (vexa_send_ess_serpentine_flow_use_cpsp(run.ports, run.count, &send_count) != 0)
        return stop_traffic(run, FACMSG_STAGE_TRANSMIT, "cpsp");
    log_as(run.op, LOG_TRACE, "cpu_send_cnt=%d\n", static_cast<int>(send_count));
    reply->cpu_send_cnt = send_count;
    sleep(DRAIN_S);
    if (vexa_ess_serpentine_vlan(run.unit, run.ports, run.count, 0) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_REMOVAL, "cancel vlan1");
    if (!set_loopback(run, 1))
        return stop_at(run, FACMSG_STAGE_LOOPBACK_RESTORE);
    sleep(COUNTER_SETTLE_S);
    vexa_ess_serpentine_cpu_recv_packet(last_port, &recv_count);
    log_as(run.op, LOG_TRACE, "CPU recv cnt:%lu.\n", static_cast<unsigned long>(recv_count));
    if (recv_count != send_count)
        reply->fail_stage = FACMSG_STAGE_STATISTICS;
    if (vexa_ess_serpentine_port_stat(run.unit, run.ports, run.count, send_count, reply) != 0)
        reply->fail_stage = FACMSG_STAGE_STATISTICS;
    return true;
}

int facmsg_ess_serpentine_flow_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<serpentine_flow_reply>(request);
    stress_run run = run_of(reply, __func__);
    const bool own_slots = slots_filled(&drv::port_vlan_pair, &drv::set_pvid, &drv::vlan_static_mac);
    if (list_loopback_ports(run, "serpentine flow test", own_slots, "No port for serpentine flow testing"))
        for (int pass = 1; pass_serpentine(run, reply) && wrong_counts(run) && pass < MOST_PASSES; pass++)
            memset(reply, 0, sizeof(*reply));
    return send_reply(fd, FACMSG_ESS_SERPENTINE, reply);
}
