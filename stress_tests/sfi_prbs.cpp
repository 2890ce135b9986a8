/* SPDX-License-Identifier: MIT
 *
 * The PRBS run of the fiber ports. The station judges the status words.
 */
#include <cstddef>
#include <unistd.h>

#include "packet/test_ports.h"
#include "stress.h"

static_assert(sizeof(prbs_test_reply) == 1040 && offsetof(prbs_test_reply, prbs_status) == 16);
static_assert(int{FACMSG_PRBS_STAGE_SPEED} == int{FACMSG_STAGE_SPEED}); /* as the shared steps note them */
static_assert(int{FACMSG_PRBS_STAGE_LINK} == int{FACMSG_STAGE_LINK});

constexpr unsigned PRBS_S = 60;

/* A run, and what its bit sequences need besides. */
struct prbs_run {
    stress_run run;
    uint32_t *status;    /* the reply's status words */
    uint32_t driver_arg; /* its address goes with every start and stop */
};

static bool supported(const char *op)
{
    if (slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::begin_end_prbs,
                     &drv::get_clear_prbs_status, &drv::port_on_off, &drv::port_phy_loopback, &drv::get_port_type))
        return true;
    log_as(op, LOG_ERROR,
           "serpentine flow test no support(get_ability:%p, get_status:%p, port_speed:%p, begin_end_prbs:%p, "
           "get_clear_prbs_status:%p, port_on_off:%p, phy_loopback:%p).\n",
           slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status),
           slot_address(&drv::begin_end_prbs), slot_address(&drv::get_clear_prbs_status),
           slot_address(&drv::port_on_off), slot_address(&drv::port_phy_loopback));
    return false;
}

static void read_and_clear_status(const prbs_run &prbs, const char *purpose)
{
    const stress_run &run = prbs.run;
    for (uint32_t i = 0; i < run.count; i++) {
        call(&drv::get_clear_prbs_status, run.unit, run.ports[i], &prbs.status[i]);
        log_as(run.op, LOG_TRACE, "%s port %d prbs:0x%x .\n", purpose, static_cast<int>(run.ports[i]), prbs.status[i]);
    }
}

static void switch_prbs(prbs_run &prbs, uint32_t start)
{
    const stress_run &run = prbs.run;
    for (uint32_t i = 0; i < run.count; i++) {
        call(&drv::begin_end_prbs, run.unit, run.ports[i], start, &prbs.driver_arg);
        log_as(run.op, LOG_TRACE, "%s port %d prbs.\n", start != 0 ? "Start" : "Stop", static_cast<int>(run.ports[i]));
    }
}

static void run_prbs(prbs_run &prbs)
{
    read_and_clear_status(prbs, "Clear");
    switch_prbs(prbs, 1);
    sleep(PRBS_S);
    read_and_clear_status(prbs, "Get");
    switch_prbs(prbs, 0);
}

static void test_ports(prbs_run &prbs)
{
    if (!restart_at_fastest(prbs.run))
        return;
    if (!set_loopback(prbs.run, 0)) {
        stop_at(prbs.run, FACMSG_PRBS_STAGE_LOOPBACK);
        return;
    }
    if (wait_for_links(prbs.run) != link_wait::STABLE)
        return;
    run_prbs(prbs);
    if (!set_loopback(prbs.run, 1))
        stop_at(prbs.run, FACMSG_PRBS_STAGE_LOOPBACK_RESTORE);
}

static void test_prbs(prbs_test_reply *reply, const char *op)
{
    if (!supported(op)) {
        reply->result = FACMSG_STRESS_NOT_SUPPORTED;
        return;
    }
    const auto has_fiber = [](const port_ability_row &row) { return row.fiber != 0; };
    const uint32_t count = list_ports(reply->unit, STRESS_SCAN, has_fiber, op);
    if (count == 0) {
        log_as(op, LOG_ERROR, "No port for serpentine flow testing.\n");
        reply->result = FACMSG_STRESS_NO_PORT;
        return;
    }
    reply->port_count = count;
    speed_choice speed_codes;
    prbs_run prbs = {{op, reply->unit, g_test_ports, count, &reply->result, &reply->fail_stage, &speed_codes, nullptr},
                     reply->prbs_status,
                     0};
    test_ports(prbs);
}

int facmsg_ess_sfi_prbs_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<prbs_test_reply>(request);
    test_prbs(reply, __func__);
    return send_reply(fd, FACMSG_ESS_SFI_PRBS, reply);
}
