/* SPDX-License-Identifier: MIT
 *
 * Driver functions: ports, what their PHYs can do and count, their loopback and their bit sequence test.
 */
#include "driver_slots.h"

#include <cstring>

#include "sim/model/ability.h"

namespace sim
{

int slots::get_status(board &b, uint32_t, uint32_t number, port_status_row *status)
{
    return with_port(b, number, [&](port &target) {
        *status = target.status();
        return 0;
    });
}

int slots::set_status(board &b, uint32_t, uint32_t number, port_status_row *status)
{
    return with_port(b, number, [&](port &target) { return b.set_status(target, *status) ? 0 : -1; });
}

int slots::get_ability(board &b, uint32_t, uint32_t number, port_ability_row *ability)
{
    return with_port(b, number, [&](port &target) {
        *ability = target.config().ability;
        return 0;
    });
}

int slots::get_port_phyid(board &b, uint32_t number, void *record)
{
    return with_port(b, number, [&](port &target) {
        memcpy(record, &target.config().phy_id, sizeof(uint32_t));
        return 0;
    });
}

int slots::port_on_off(board &b, uint32_t, uint32_t number, uint32_t on)
{
    return with_port(b, number, [&](port &target) {
        b.switch_port(target, on != 0);
        return 0;
    });
}

int slots::get_port_fcs(board &b, uint32_t, uint32_t number, uint64_t *fcs)
{
    return with_port(b, number, [&](port &target) {
        *fcs = target.counters.fcs_errors;
        return 0;
    });
}

int slots::get_port_stat(board &b, uint32_t, uint32_t number, uint64_t *in_pkts, uint64_t *ex_pkts)
{
    return with_port(b, number, [&](port &target) {
        *in_pkts = target.counters.in_pkts;
        *ex_pkts = target.counters.ex_pkts;
        return 0;
    });
}

int slots::clear_port_stat(board &b, uint32_t, uint32_t number)
{
    return with_port(b, number, [&](port &target) {
        target.counters = {};
        return 0;
    });
}

enum port_type : uint32_t { COPPER = 1, FIBER = 2, EX_COPPER = 10 };

static uint32_t type_of(const port_ability_row &ability)
{
    if (ability_allows(ability.copper, SPEED_2500M, 0) || ability_allows(ability.copper, SPEED_5G, 0))
        return EX_COPPER;
    return ability.copper ? COPPER : FIBER;
}

int slots::get_port_type(board &b, uint32_t, uint32_t number, uint32_t *type)
{
    return with_port(b, number, [&](port &target) {
        *type = type_of(target.config().ability);
        return 0;
    });
}

/* Whether there are ports of a type, and whether all of them run a speed. */
static uint8_t any_of(const board &b, port_type type)
{
    const auto &ports = b.config().ports;
    return std::any_of(ports.begin(), ports.end(),
                       [=](auto &entry) { return !entry.second.faces_fpga && type_of(entry.second.ability) == type; });
}

static uint8_t all_run(const board &b, port_type type, uint32_t speed)
{
    const auto &ports = b.config().ports;
    return any_of(b, type) && std::all_of(ports.begin(), ports.end(), [=](auto &entry) {
               const auto &[copper, fiber] = entry.second.ability;
               return entry.second.faces_fpga || type_of(entry.second.ability) != type ||
                      ability_allows(type == FIBER ? fiber : copper, speed, 0);
           });
}

int slots::get_ex_speed_support(board &b, ex_speed_support *support)
{
    *support = {any_of(b, EX_COPPER), all_run(b, EX_COPPER, SPEED_5G), all_run(b, EX_COPPER, SPEED_2500M),
                all_run(b, FIBER, SPEED_10G)};
    return 0;
}

/* Nothing to prepare here. */
int slots::port_speed_prepare(board &)
{
    return 0;
}

int slots::port_phy_loopback(board &b, uint32_t, uint32_t number, uint32_t mode)
{
    return with_port(b, number, [&](port &target) {
        if (mode > 1)
            return -1;
        b.loop_phy(target, mode == 0);
        return 0;
    });
}

/* A bit sequence runs on fiber, whatever medium a combo port uses at the moment. */
template <class F> static int with_fiber_port(board &b, uint32_t number, F use)
{
    return with_port(b, number, [&](port &target) { return target.config().ability.fiber ? use(target) : -1; });
}

int slots::begin_end_prbs(board &b, uint32_t, uint32_t number, uint32_t start, uint32_t *)
{
    return with_fiber_port(b, number, [&](port &target) {
        start ? target.prbs.start(b.clock.now()) : target.prbs.stop();
        return 0;
    });
}

int slots::get_clear_prbs_status(board &b, uint32_t, uint32_t number, uint32_t *status)
{
    return with_fiber_port(b, number, [&](port &target) {
        *status =
            target.prbs.read_and_clear(b.prbs_locked(target), target.config().faults.prbs_errors_per_s, b.clock.now());
        return 0;
    });
}

} // namespace sim
