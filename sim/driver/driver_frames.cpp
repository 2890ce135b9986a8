/* SPDX-License-Identifier: MIT
 *
 * Driver functions: the frames and addresses of the CPU, where VLANs lead frames, and the switch as a whole.
 */
#include "driver_slots.h"

namespace sim
{

/* Frames that the CPU can send: from a bare Ethernet header up to a jumbo frame. */
static constexpr uint32_t SHORTEST_CPU_FRAME = 14;
static constexpr uint32_t LONGEST_CPU_FRAME = 9216;

int slots::set_cpu_mac_addr(board &b, const uint8_t *mac)
{
    b.fabric.add_cpu_mac(mac_of(mac));
    return 0;
}

int slots::clear_cpu_mac_addr(board &b, const uint8_t *mac)
{
    return b.fabric.remove_cpu_mac(mac_of(mac)) ? 0 : -1;
}

int slots::send_packet(board &b, const pack_info *info, const uint8_t *frame, uint32_t length)
{
    auto *out = b.find_phy(info->phy_id);
    if (out == nullptr || length < SHORTEST_CPU_FRAME || length > LONGEST_CPU_FRAME)
        return -1;
    b.transmit(*out, {frame, length});
    return 0;
}

int slots::set_factory_mode(board &b)
{
    set_and_announce(b.factory_mode, true, "factory mode");
    return 0;
}

int slots::set_port_debug_level(board &b, int32_t level)
{
    set_and_announce(b.port_debug_level, level, "port debug level");
    return 0;
}

int slots::set_poe_debug_level(board &b, int32_t level)
{
    set_and_announce(b.poe_debug_level, level, "poe debug level");
    return 0;
}

/* port_vlan_pair's mode flag of a member. */
static egress_tag tagging_of(uint32_t mode)
{
    return mode ? egress_tag::UNTAGGED : egress_tag::TAGGED;
}

static int set_member(board &b, uint32_t number, uint32_t vlan_id, egress_tag tagging, bool add)
{
    return with_port(b, number, [&](port &target) {
        if (vlan_id > MAX_VLAN)
            return -1;
        add ? b.fabric.join(vlan_id, target, tagging) : b.fabric.leave(vlan_id, target);
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
    return with_port(b, number, [&](port &target) {
        if (vlan_id < 1 || vlan_id > MAX_VLAN)
            return -1;
        target.pvid = static_cast<uint16_t>(vlan_id);
        return 0;
    });
}

int slots::vlan_static_mac(board &b, uint32_t, uint32_t number, const uint8_t *mac, uint32_t vlan_id, uint32_t add)
{
    return with_port(b, number, [&](port &target) {
        if (add)
            b.fabric.add_static(vlan_id, mac_of(mac), target);
        return add || b.fabric.remove_static(vlan_id, mac_of(mac), target) ? 0 : -1;
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
