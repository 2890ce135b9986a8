/* SPDX-License-Identifier: MIT
 *
 * The PRBS run of the fiber ports. The station judges the status words.
 */
#include <cstddef>
#include <unistd.h>

#include "ess_test.h"
#include "phy_loopback.h"
#include "port_tests/port_scan.h"
#include "stress_speed.h"

static_assert(sizeof(prbs_test_reply) == 1040 && offsetof(prbs_test_reply, prbs_status) == 16);

namespace
{

constexpr const char *OP = "facmsg_ess_sfi_prbs_fun";
constexpr unsigned PRBS_S = 60;

struct prbs_run {
    uint32_t unit;
    const uint32_t *ports;
    uint32_t count;
    prbs_test_reply *reply;
    uint32_t prbs_arg; /* its address goes with every start and stop */
};

bool supported()
{
    if (slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::begin_end_prbs,
                     &drv::get_clear_prbs_status, &drv::port_on_off, &drv::port_phy_loopback, &drv::get_port_type))
        return true;
    log_as(OP, LOG_ERROR,
           "serpentine flow test no support(get_ability:%p, get_status:%p, port_speed:%p, begin_end_prbs:%p, "
           "get_clear_prbs_status:%p, port_on_off:%p, phy_loopback:%p).\n",
           slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status),
           slot_address(&drv::begin_end_prbs), slot_address(&drv::get_clear_prbs_status),
           slot_address(&drv::port_on_off), slot_address(&drv::port_phy_loopback));
    return false;
}

void stopped(const prbs_run &run, facmsg_prbs_stage stage)
{
    run.reply->fail_stage = stage;
}

bool set_speeds(const prbs_run &run)
{
    speed_choice choice;
    const int ret = vexa_port_speed(run.unit, run.ports, run.count, FASTEST, &choice);
    if (ret == 0)
        return true;
    stopped(run, FACMSG_PRBS_STAGE_SPEED);
    log_as(OP, LOG_ERROR, "set port speed ,copper_speed%d, ex_copper_speed%d, fiber_speed%d fail(ret = %d).\n",
           static_cast<int>(FASTEST.copper), static_cast<int>(FASTEST.ex_copper), static_cast<int>(FASTEST.fiber), ret);
    return false;
}

bool set_loopback(const prbs_run &run, uint8_t mode, facmsg_prbs_stage stage)
{
    if (set_phy_loopback(run.unit, run.ports, run.count, mode, OP))
        return true;
    stopped(run, stage);
    return false;
}

bool wait_for_links(const prbs_run &run)
{
    link_codes codes = {};
    switch (wait_for_stable_links(run.unit, run.ports, run.count, 1, &codes, OP)) {
    case link_wait::STABLE:
        return true;
    case link_wait::NO_MEMORY:
        run.reply->result = FACMSG_STRESS_NO_MEMORY;
        return false;
    case link_wait::FAILED:
        break;
    }
    stopped(run, FACMSG_PRBS_STAGE_LINK);
    log_as(OP, LOG_ERROR, "port down.\n");
    return false;
}

uint32_t get_clear_status(const prbs_run &run, uint32_t i)
{
    call(&drv::get_clear_prbs_status, run.unit, run.ports[i], &run.reply->prbs_status[i]);
    return run.reply->prbs_status[i];
}

void run_prbs(prbs_run &run)
{
    for (uint32_t i = 0; i < run.count; i++) {
        const uint32_t status = get_clear_status(run, i);
        log_as(OP, LOG_TRACE, "Clear port %d prbs:0x%x .\n", static_cast<int>(run.ports[i]), status);
    }
    for (uint32_t i = 0; i < run.count; i++) {
        call(&drv::begin_end_prbs, run.unit, run.ports[i], 1u, &run.prbs_arg);
        log_as(OP, LOG_TRACE, "Start port %d prbs.\n", static_cast<int>(run.ports[i]));
    }
    sleep(PRBS_S);
    for (uint32_t i = 0; i < run.count; i++) {
        const uint32_t status = get_clear_status(run, i);
        log_as(OP, LOG_TRACE, "Get port %d prbs:0x%x .\n", static_cast<int>(run.ports[i]), status);
    }
    for (uint32_t i = 0; i < run.count; i++) {
        call(&drv::begin_end_prbs, run.unit, run.ports[i], 0u, &run.prbs_arg);
        log_as(OP, LOG_TRACE, "Stop port %d prbs.\n", static_cast<int>(run.ports[i]));
    }
}

void test_ports(prbs_run &run)
{
    switch_ports(run.unit, run.ports, run.count, 0);
    if (!set_speeds(run))
        return;
    switch_ports(run.unit, run.ports, run.count, 1);
    sleep(ON_SETTLE_S);
    if (!set_loopback(run, 0, FACMSG_PRBS_STAGE_LOOPBACK) || !wait_for_links(run))
        return;
    run_prbs(run);
    set_loopback(run, 1, FACMSG_PRBS_STAGE_LOOPBACK_RESTORE);
}

void test_prbs(prbs_test_reply *reply)
{
    if (!supported()) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return;
    }
    const auto has_fiber = [](const port_ability_row &row) { return row.fiber != 0; };
    prbs_run run = {reply->unit, g_test_ports, list_ports(reply->unit, STRESS_SCAN, has_fiber, OP), reply, 0};
    if (run.count == 0) {
        log_as(OP, LOG_ERROR, "No port for serpentine flow testing.\n");
        reply->result = FACMSG_STRESS_NO_PORT;
        return;
    }
    reply->port_count = run.count;
    test_ports(run);
}

} // namespace

int facmsg_ess_sfi_prbs_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<prbs_test_reply>(request);
    test_prbs(reply);
    return send_reply(fd, FACMSG_ESS_SFI_PRBS, reply);
}
