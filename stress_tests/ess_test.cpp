/* SPDX-License-Identifier: MIT
 *
 * The steps around the traffic of the loopback stress tests.
 */
#include "ess_test.h"

#include <unistd.h>

#include "phy_loopback.h"
#include "port_tests/port_scan.h"
#include "stress_speed.h"

bool ess_supported(const char *test_name, bool own_functions, const char *op)
{
    if (own_functions &&
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

uint32_t list_stress_ports(uint32_t unit, const char *op)
{
    const auto has_any_ability = [](const port_ability_row &row) { return (row.copper | row.fiber) != 0; };
    return list_ports(unit, STRESS_SCAN, has_any_ability, op);
}

bool ess_set_loopback(const ess_run &run, uint8_t mode)
{
    return set_phy_loopback(run.unit, run.ports, run.count, mode, run.op);
}

bool ess_stopped(const ess_run &run, facmsg_stress_stage stage)
{
    *run.fail_stage = stage;
    return false;
}

bool ess_traffic_stopped(const ess_run &run, facmsg_stress_stage stage)
{
    const char *const reason = stage == FACMSG_STAGE_VLAN_SETUP ? "port set pvid faild."
                               : stage == FACMSG_STAGE_TRANSMIT ? "port cpsp faild."
                                                                : "port cancel vlan1 faild.";
    log_as(run.op, LOG_ERROR, "%s\n", reason);
    return ess_stopped(run, stage);
}

static bool set_speeds(const ess_run &run)
{
    const int ret = vexa_port_speed(run.unit, run.ports, run.count, FASTEST, run.speed_codes);
    if (ret == 0)
        return true;
    log_as(run.op, LOG_ERROR, "set port speed ,copper_speed%d, ex_copper_speed%d, fiber_speed%d fail(ret = %d).\n",
           static_cast<int>(FASTEST.copper), static_cast<int>(FASTEST.ex_copper), static_cast<int>(FASTEST.fiber), ret);
    return ess_stopped(run, FACMSG_STAGE_SPEED);
}

static bool wait_for_links(const ess_run &run)
{
    link_codes codes = {};
    switch (wait_for_stable_links(run.unit, run.ports, run.count, run.broken_hold_pause_s, &codes, run.op)) {
    case link_wait::STABLE:
        return true;
    case link_wait::NO_MEMORY:
        *run.result = FACMSG_STRESS_NO_MEMORY;
        return false;
    case link_wait::FAILED:
        break;
    }
    for (uint32_t i = 0; i < run.count; i++)
        if (codes.code[i] != FACMSG_PORT_OK)
            run.port_down[i] = 1;
    log_as(run.op, LOG_ERROR, "port down.\n");
    return ess_stopped(run, FACMSG_STAGE_LINK);
}

bool ess_prepare_ports(const ess_run &run)
{
    switch_ports(run.unit, run.ports, run.count, 0);
    if (!set_speeds(run))
        return false;
    switch_ports(run.unit, run.ports, run.count, 1);
    sleep(ON_SETTLE_S);
    if (!prepare_phy_loopback([&](uint8_t mode) { return run.set_loopback(run, mode); }))
        return ess_stopped(run, FACMSG_STAGE_LOOPBACK);
    if (!wait_for_links(run))
        return false;
    vexa_clear_port_stat(run.unit, run.ports, run.count);
    return true;
}
