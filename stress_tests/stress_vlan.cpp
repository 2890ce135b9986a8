/* SPDX-License-Identifier: MIT
 *
 * Pair VLANs and the serpentine chain.
 */
#include "stress_vlan.h"

#include "facmsg_internal.h"
#include "stress_frames.h"
#include "stress_ports.h"

constexpr uint32_t FIRST_VLAN = 100;
constexpr uint32_t DEFAULT_VLAN = 1;

int vexa_ess_port_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable)
{
    const uint32_t add = enable != 0;
    int ret = 0;
    for (uint32_t i = 0; i < count; i += 2)
        ret |= call(&drv::port_vlan_pair, unit, ports[i], ports[partner_of(i, count)], FIRST_VLAN + i, 0u, 0u, add);
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
        ret |= call(&drv::vlan, unit, ports[i], FIRST_VLAN + i, uint32_t{enable});
    if (enable != 0)
        for (uint32_t i = 0; i < count; i += 2)
            ret |= set_pair_pvid(unit, ports, count, i, FIRST_VLAN + i);
    return ret;
}
