/* SPDX-License-Identifier: MIT
 *
 * Driver calls for all listed ports.
 */
#include "stress.h"

#include "facmsg_internal.h"

constexpr uint32_t DEFAULT_VLAN = 1;

void vexa_clear_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count)
{
    for (uint32_t i = 0; i < count; i++) {
        call(&drv::clear_port_stat, unit, ports[i]);
        log_trace("clear port%d stat.\n", static_cast<int>(ports[i]));
    }
}

loopback_refusal set_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode)
{
    for (uint32_t i = 0; i < count; i++) {
        const int ret = call(&drv::port_phy_loopback, unit, ports[i], uint32_t{mode});
        if (ret != 0)
            return {ports[i], ret};
    }
    return {0, 0};
}

int vexa_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode)
{
    if (!slots_filled(&drv::port_phy_loopback)) {
        log_error("vexa_phy_loopback no support(port_phy_loopback:%p).\n", slot_address(&drv::port_phy_loopback));
        return -1;
    }
    const auto refusal = set_phy_loopback(unit, ports, count, mode);
    if (refusal.ret == 0)
        return 0;
    log_error("set port phy loopback port%d fail(ret = %d).\n", static_cast<int>(refusal.port), refusal.ret);
    return -1;
}

int vexa_port_vlan1(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t member)
{
    int ret = 0;
    for (uint32_t i = 0; i < count && ret == 0; i++)
        ret = call(&drv::port_vlan1, unit, ports[i], member);
    return ret;
}

int vexa_ess_port_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable)
{
    const uint32_t add = enable != 0;
    int ret = 0;
    for (uint32_t i = 0; i < count; i += 2)
        ret |= call(&drv::port_vlan_pair, unit, ports[i], ports[partner_of(i, count)], pair_vlan(i), 0u, 0u, add);
    return ret;
}

int vexa_ess_serpentine_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable)
{
    if (count == 0)
        return 0;
    const uint32_t add = enable != 0;
    const auto pvid = [add](uint32_t vlan_id) { return add ? vlan_id : DEFAULT_VLAN; };
    const uint32_t first = ports[0];
    const uint32_t last = ports[count - 1];
    const uint32_t last_vlan = FIRST_VLAN + count;

    int ret = call(&drv::port_vlan_pair, unit, first, first, FIRST_VLAN, 1u, 1u, add);
    for (uint32_t k = 1; k < count; k++) {
        ret |= call(&drv::port_vlan_pair, unit, ports[k - 1], ports[k], FIRST_VLAN + k, 0u, 1u, add);
        ret |= call(&drv::set_pvid, unit, ports[k - 1], pvid(FIRST_VLAN + k));
    }
    ret |= call(&drv::port_vlan_pair, unit, last, last, last_vlan, 0u, 0u, add);
    ret |= call(&drv::set_pvid, unit, last, pvid(last_vlan));
    ret |= call(&drv::vlan_static_mac, unit, last, SERPENTINE_MAC, last_vlan, add);
    ret |= call(&drv::port_vlan_pair, unit, first, first, 0u, 1u, 1u, add);
    return ret;
}

static int set_pair_pvid(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t i, uint32_t vlan_id)
{
    const int first = call(&drv::set_pvid, unit, ports[i], vlan_id);
    return first | call(&drv::set_pvid, unit, ports[partner_of(i, count)], vlan_id);
}

int vexa_port_pvid(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable)
{
    if (!slots_filled(&drv::set_pvid, &drv::vlan)) {
        log_error("vexa_port_pvid no support(set_pvid:%p, vlan:%p).\n", slot_address(&drv::set_pvid),
                  slot_address(&drv::vlan));
        return -1;
    }
    int ret = 0;
    if (enable == 0)
        for (uint32_t i = 0; i < count; i += 2)
            ret |= set_pair_pvid(unit, ports, count, i, DEFAULT_VLAN);
    for (uint32_t i = 0; i < count; i += 2)
        ret |= call(&drv::vlan, unit, ports[i], pair_vlan(i), uint32_t{enable});
    if (enable != 0)
        for (uint32_t i = 0; i < count; i += 2)
            ret |= set_pair_pvid(unit, ports, count, i, pair_vlan(i));
    return ret;
}
