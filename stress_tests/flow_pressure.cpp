/* SPDX-License-Identifier: MIT
 *
 * Traffic stress over cables, at three speed settings: VLAN 1 frames circulate between the ports of each cabled pair.
 * However it ends, all ports are back in VLAN 1.
 */
#include <cstddef>
#include <cstring>
#include <unistd.h>

#include "packet/test_ports.h"
#include "stress.h"

static_assert(sizeof(flow_pressure_reply) == 2340);
static_assert(offsetof(flow_pressure_reply, speed_codes) == 24 && offsetof(flow_pressure_reply, port_down) == 33);
static_assert(offsetof(flow_pressure_reply, port_fcs_err) == 801);
static_assert(offsetof(flow_pressure_reply, port_cnt_err) == 1569);

static bool supported(const char *op)
{
    if (slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::port_vlan1, &drv::port_on_off,
                     &drv::get_port_type, &drv::clear_port_stat, &drv::get_port_phyid, &drv::send_packet,
                     &drv::get_port_fcs, &drv::get_port_stat))
        return true;
    log_as(op, LOG_ERROR,
           "flow pressure no support(get_ability:%p, get_status:%p, port_speed:%p, port_vlan1:%p, port_on_off:%p).\n",
           slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status),
           slot_address(&drv::port_vlan1), slot_address(&drv::port_on_off));
    return false;
}

/* The number of listed ports. None when the test is not possible, with the reason as its result. */
static uint32_t list_flow_ports(flow_pressure_reply *reply, const char *op)
{
    if (!supported(op)) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return 0;
    }
    const uint32_t count = list_ports(reply->unit, STRESS_SCAN, has_any_ability, op);
    if (count == 0) {
        log_as(op, LOG_ERROR, "No support flow pressure for testing.\n");
        reply->result = FACMSG_STRESS_NO_PORT;
    }
    return count;
}

static bool restart_at_setting(const stress_run &run, uint32_t setting)
{
    const int number = static_cast<int>(setting);
    const int ret = restart_ports(run, {setting, setting, setting});
    if (ret != 0)
        log_as(run.op, LOG_ERROR, "set port speed ,copper_speed%d fiber_speed%d fail(ret = %d).\n", number, number,
               ret);
    return ret == 0;
}

static bool stop_traffic(const stress_run &run, facmsg_stress_stage stage, uint32_t setting, const char *reason)
{
    log_as(run.op, LOG_ERROR, "port speed %d %s faild.\n", static_cast<int>(setting), reason);
    return stop_at(run, stage);
}

static bool circulate_frames(const stress_run &run, uint32_t setting)
{
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 1) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_SETUP, setting, "set vlan1");
    if (vexa_send_packet_pressure_use_cpsp(run.ports[0]) != 0)
        return stop_traffic(run, FACMSG_STAGE_TRANSMIT, setting, "cpsp");
    sleep(TRAFFIC_S);
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 0) != 0)
        return stop_traffic(run, FACMSG_STAGE_VLAN_REMOVAL, setting, "cancel vlan1");
    return true;
}

/* One speed setting, however it ends; false only when memory is short, which ends the test. */
static bool run_setting(const stress_run &run, uint32_t setting, flow_pressure_reply *reply)
{
    if (!restart_at_setting(run, setting))
        return true;
    const link_wait links = wait_for_links(run);
    if (links != link_wait::STABLE)
        return links != link_wait::NO_MEMORY;
    vexa_clear_port_stat(run.unit, run.ports, run.count);
    if (!circulate_frames(run, setting))
        return true;
    sleep(COUNTER_SETTLE_S);
    if (vexa_port_stat(run.unit, run.ports, run.count, reply->port_fcs_err[setting], reply->port_cnt_err[setting]) != 0)
        stop_at(run, FACMSG_STAGE_STATISTICS);
    return true;
}

static stress_run run_of(flow_pressure_reply *reply, uint32_t setting, const char *op)
{
    stress_run run = {op,
                      reply->unit,
                      g_test_ports,
                      reply->port_count,
                      &reply->result,
                      &reply->fail_stage[setting],
                      &reply->speed_codes[setting],
                      reply->port_down[setting]};
    run.port_down_lines = true;
    return run;
}

/* All settings; false when memory is short. */
static bool run_pass(flow_pressure_reply *reply, const char *op)
{
    for (uint32_t setting = 0; setting < FACMSG_FLOW_SETTINGS; setting++)
        if (!run_setting(run_of(reply, setting, op), setting, reply))
            return false;
    return true;
}

static bool any_failure(const flow_pressure_reply *reply)
{
    return (reply->fail_stage[0] | reply->fail_stage[1] | reply->fail_stage[2]) != 0;
}

/* Makes passes until none of the settings fails; each starts on a cleared reply. */
static void test_flow(flow_pressure_reply *reply, uint32_t count, const char *op)
{
    const uint32_t unit = reply->unit;
    for (int pass = 1;; pass++) {
        reply->port_count = count;
        if (!run_pass(reply, op) || !any_failure(reply) || pass == MOST_PASSES)
            return;
        memset(reply, 0, sizeof(*reply));
        reply->unit = unit;
    }
}

int facmsg_flow_pressure_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<flow_pressure_reply>(request);
    const uint32_t unit = reply->unit;
    const uint32_t count = list_flow_ports(reply, __func__);
    if (count > 0)
        test_flow(reply, count, __func__);
    if (vexa_port_vlan1(unit, g_test_ports, count, 1) != 0)
        log_error("set all port forward faild.\n");
    return send_reply(fd, FACMSG_FLOW_REPLY, reply);
}
