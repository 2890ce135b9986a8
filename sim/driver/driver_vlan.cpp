/* SPDX-License-Identifier: MIT
 *
 * Driver functions: VLANs, static addresses and the broadcast-test state.
 */
#include "driver_slots.h"

namespace sim
{

/* port_vlan_pair's mode flag of a member. */
static egress_tag tagging_of(uint32_t mode)
{
    return mode ? egress_tag::UNTAGGED : egress_tag::TAGGED;
}

static int set_member(board &b, uint32_t number, uint32_t vlan_id, egress_tag tagging, bool add)
{
    return with_port(b, number, [&](port &found) {
        if (vlan_id > MAX_VLAN)
            return -1;
        add ? b.fabric.join(vlan_id, found, tagging) : b.fabric.leave(vlan_id, found);
        return 0;
    });
}

int slots::port_vlan_pair(board &b, uint32_t, uint32_t port_a, uint32_t port_b, uint32_t vlan_id, uint32_t mode_a,
                          uint32_t mode_b, uint32_t add)
{
    return set_member(b, port_a, vlan_id, tagging_of(mode_a), add) |
           set_member(b, port_b, vlan_id, tagging_of(mode_b), add);
}

int slots::vlan(board &b, uint32_t, uint32_t number, uint32_t vlan_id, uint32_t add)
{
    return set_member(b, number, vlan_id, egress_tag::UNTAGGED, add);
}

int slots::port_vlan1(board &b, uint32_t, uint32_t number, uint32_t member)
{
    return set_member(b, number, DEFAULT_VLAN, egress_tag::UNTAGGED, member);
}

int slots::set_pvid(board &b, uint32_t, uint32_t number, uint32_t vlan_id)
{
    return with_port(b, number, [&](port &found) {
        if (vlan_id < 1 || vlan_id > MAX_VLAN)
            return -1;
        found.pvid = static_cast<uint16_t>(vlan_id);
        return 0;
    });
}

int slots::vlan_static_mac(board &b, uint32_t, uint32_t number, const uint8_t *mac, uint32_t vlan_id, uint32_t add)
{
    return with_port(b, number, [&](port &found) {
        if (add)
            b.fabric.add_static(vlan_id, mac_of(mac), found);
        return add || b.fabric.remove_static(vlan_id, mac_of(mac), found) ? 0 : -1;
    });
}

int slots::port_broadcast_begin(board &b, uint32_t)
{
    b.fabric.broadcast_test = true;
    return 0;
}

int slots::port_broadcast_end(board &b, uint32_t)
{
    b.fabric.broadcast_test = false;
    return 0;
}

} // namespace sim
