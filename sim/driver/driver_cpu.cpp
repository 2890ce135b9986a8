/* SPDX-License-Identifier: MIT
 *
 * Driver functions: the CPU, its frames and addresses, and the switch as a whole.
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
    auto *found = b.find_phy(info->phy_id);
    if (!found || length < SHORTEST_CPU_FRAME || length > LONGEST_CPU_FRAME)
        return -1;
    b.transmit(*found, {frame, length});
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

} // namespace sim
