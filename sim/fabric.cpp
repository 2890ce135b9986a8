/* SPDX-License-Identifier: MIT
 *
 * The switching fabric: where a frame that came in goes.
 */
#include "fabric.h"

#include <algorithm>
#include <utility>

namespace sim
{

fabric::fabric(std::function<void(const port &, const frame &)> to_cpu) : to_cpu_(std::move(to_cpu)) {}

void fabric::attach(port &front)
{
    front_.push_back(&front);
    join(DEFAULT_VLAN, front, egress_tag::UNTAGGED);
}

void fabric::ingress(port &at, frame &&arrived)
{
    if (!at.take_in(arrived))
        return;
    if (arrived.damaged)
        ++at.counters.fcs_errors;
    else if (!cpu_macs_.empty() && cpu_macs_.count(arrived.destination()))
        to_cpu_(at, arrived);
    else if (!broadcast_test)
        forward(at, arrived);
    else if (!arrived.tag)
        flood_everywhere(arrived);
}

/* A tag of VLAN 0 only carries a priority. */
static uint16_t vlan_of(const port &at, const frame &arrived)
{
    const uint16_t tagged = arrived.tag.value_or(0) & VLAN_MASK;
    return tagged ? tagged : at.pvid;
}

static void send_out(port &to, egress_tag tagging, uint16_t vlan, const frame &arrived)
{
    if (!to.out.has_room())
        return;
    auto leaving = arrived;
    if (tagging == egress_tag::UNTAGGED)
        leaving.tag.reset();
    else if (!leaving.tag || (*leaving.tag & VLAN_MASK) != vlan)
        leaving.tag = vlan;
    to.out.send(std::move(leaving));
}

void fabric::forward(port &at, const frame &arrived)
{
    const auto vlan = vlan_of(at, arrived);
    if (!statics_.empty() && statics_.count({&at, vlan, arrived.destination()}))
        return to_cpu_(at, arrived);
    /* Nothing is learned, so a frame to one address floods like a broadcast; only the default VLAN, where nobody set
     * that up, holds it back. */
    const bool held_back = vlan == DEFAULT_VLAN && !arrived.to_many();
    if (vlan > MAX_VLAN || held_back || !flood(at, vlans_[vlan], vlan, arrived))
        ++dropped_;
}

/* False when the port is no member, or the only one. */
bool fabric::flood(const port &at, const vlan_members &members, uint16_t vlan, const frame &arrived)
{
    const auto is_at = [&](const vlan_member &member) { return member.at == &at; };
    if (std::none_of(members.begin(), members.end(), is_at))
        return false;
    for (const auto &member : members) {
        if (!is_at(member))
            send_out(*member.at, member.tagging, vlan, arrived);
    }
    return members.size() > 1;
}

void fabric::flood_everywhere(const frame &arrived)
{
    for (auto *to : front_)
        send_out(*to, egress_tag::TAGGED, DEFAULT_VLAN, arrived);
}

void fabric::add_cpu_mac(const mac_address &mac)
{
    cpu_macs_.insert(mac);
}

bool fabric::remove_cpu_mac(const mac_address &mac)
{
    return cpu_macs_.erase(mac) != 0;
}

void fabric::join(uint32_t vlan, port &member, egress_tag tagging)
{
    leave(vlan, member);
    vlans_[vlan].push_back({&member, tagging});
}

void fabric::leave(uint32_t vlan, const port &member)
{
    std::erase_if(vlans_[vlan], [&](const vlan_member &known) { return known.at == &member; });
}

void fabric::add_static(uint32_t vlan, const mac_address &mac, const port &at)
{
    statics_.insert({&at, vlan, mac});
}

bool fabric::remove_static(uint32_t vlan, const mac_address &mac, const port &at)
{
    return statics_.erase({&at, vlan, mac}) != 0;
}

} // namespace sim
