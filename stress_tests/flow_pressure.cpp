/* SPDX-License-Identifier: MIT
 *
 * Traffic stress over cables, at three speed settings: VLAN 1 frames circulate between the ports of each cabled pair.
 * However it ends, all ports are back in VLAN 1.
 */
#include <cstddef>
#include <unistd.h>

#include "ess_test.h"
#include "stress_senders.h"
#include "stress_speed.h"
#include "stress_stat.h"

static_assert(sizeof(flow_pressure_reply) == 2340);
static_assert(offsetof(flow_pressure_reply, speed_codes) == 24 && offsetof(flow_pressure_reply, port_down) == 33);
static_assert(offsetof(flow_pressure_reply, port_fcs_err) == 801);
static_assert(offsetof(flow_pressure_reply, port_cnt_err) == 1569);

namespace
{

constexpr const char *OP = "facmsg_flow_pressure_fun";
constexpr int REPEATS = 2;

struct flow_run {
    uint32_t unit;
    const uint32_t *ports;
    uint32_t count;
    flow_pressure_reply *reply;
};

bool supported()
{
    if (slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::port_vlan1, &drv::port_on_off,
                     &drv::get_port_type, &drv::clear_port_stat, &drv::get_port_phyid, &drv::send_packet,
                     &drv::get_port_fcs, &drv::get_port_stat))
        return true;
    log_as(OP, LOG_ERROR,
           "flow pressure no support(get_ability:%p, get_status:%p, port_speed:%p, port_vlan1:%p, port_on_off:%p).\n",
           slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status),
           slot_address(&drv::port_vlan1), slot_address(&drv::port_on_off));
    return false;
}

void stopped(const flow_run &run, uint32_t setting, facmsg_stress_stage stage)
{
    run.reply->fail_stage[setting] = stage;
}

bool set_speeds(const flow_run &run, uint32_t setting)
{
    switch_ports(run.unit, run.ports, run.count, 0);
    const int ret =
        vexa_port_speed(run.unit, run.ports, run.count, {setting, setting, setting}, &run.reply->speed_codes[setting]);
    if (ret != 0) {
        const int number = static_cast<int>(setting);
        stopped(run, setting, FACMSG_STAGE_SPEED);
        log_as(OP, LOG_ERROR, "set port speed ,copper_speed%d fiber_speed%d fail(ret = %d).\n", number, number, ret);
        return false;
    }
    switch_ports(run.unit, run.ports, run.count, 1);
    sleep(ON_SETTLE_S);
    return true;
}

void report_links_down(const flow_run &run, uint32_t setting, const link_codes &codes)
{
    stopped(run, setting, FACMSG_STAGE_LINK);
    for (uint32_t i = 0; i < run.count; i++)
        if (codes.code[i] != FACMSG_PORT_OK) {
            run.reply->port_down[setting][i] = 1;
            log_as(OP, LOG_ERROR, "port%d down.\n", static_cast<int>(i + 1));
        }
    log_as(OP, LOG_ERROR, "port down.\n");
}

bool circulate_frames(const flow_run &run, uint32_t setting)
{
    const int number = static_cast<int>(setting);
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 1) != 0) {
        stopped(run, setting, FACMSG_STAGE_VLAN_SETUP);
        log_as(OP, LOG_ERROR, "port speed %d set vlan1 faild.\n", number);
        return false;
    }
    if (vexa_send_packet_pressure_use_cpsp(run.ports[0]) != 0) {
        stopped(run, setting, FACMSG_STAGE_TRANSMIT);
        log_as(OP, LOG_ERROR, "port speed %d cpsp faild.\n", number);
        return false;
    }
    sleep(TRAFFIC_S);
    if (vexa_port_vlan1(run.unit, run.ports, run.count, 0) != 0) {
        stopped(run, setting, FACMSG_STAGE_VLAN_REMOVAL);
        log_as(OP, LOG_ERROR, "port speed %d cancel vlan1 faild.\n", number);
        return false;
    }
    return true;
}

/* One speed setting, however it ends; false only when memory is short, which ends the test. */
bool run_setting(const flow_run &run, uint32_t setting)
{
    if (!set_speeds(run, setting))
        return true;
    link_codes codes = {};
    switch (wait_for_stable_links(run.unit, run.ports, run.count, 1, &codes, OP)) {
    case link_wait::NO_MEMORY:
        run.reply->result = FACMSG_STRESS_NO_MEMORY;
        return false;
    case link_wait::FAILED:
        report_links_down(run, setting, codes);
        return true;
    case link_wait::STABLE:
        break;
    }
    vexa_clear_port_stat(run.unit, run.ports, run.count);
    if (!circulate_frames(run, setting))
        return true;
    sleep(COUNTER_SETTLE_S);
    if (vexa_port_stat(run.unit, run.ports, run.count, run.reply->port_fcs_err[setting],
                       run.reply->port_cnt_err[setting]) != 0)
        stopped(run, setting, FACMSG_STAGE_STATISTICS);
    return true;
}

bool run_pass(const flow_run &run)
{
    run.reply->unit = run.unit;
    run.reply->port_count = run.count;
    for (uint32_t setting = 0; setting < FACMSG_FLOW_SETTINGS; setting++)
        if (!run_setting(run, setting))
            return false;
    return true;
}

bool any_setting_failed(const flow_pressure_reply *reply)
{
    return (reply->fail_stage[0] | reply->fail_stage[1] | reply->fail_stage[2]) != 0;
}

/* Returns the number of listed ports, however the test ended. */
uint32_t test_flow(flow_pressure_reply *reply)
{
    if (!supported()) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return 0;
    }
    const flow_run run = {reply->unit, g_test_ports, list_stress_ports(reply->unit, OP), reply};
    if (run.count == 0) {
        log_as(OP, LOG_ERROR, "No support flow pressure for testing.\n");
        reply->result = FACMSG_STRESS_NO_PORT;
        return 0;
    }
    for (int repeat = 0; run_pass(run) && any_setting_failed(reply) && repeat < REPEATS; repeat++)
        memset(reply, 0, sizeof(*reply));
    return run.count;
}

} // namespace

int facmsg_flow_pressure_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<flow_pressure_reply>(request);
    const uint32_t unit = reply->unit;
    const uint32_t count = test_flow(reply);
    if (vexa_port_vlan1(unit, g_test_ports, count, 1) != 0)
        log_error("set all port forward faild.\n");
    return send_reply(fd, FACMSG_FLOW_REPLY, reply);
}
