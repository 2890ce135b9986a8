/* SPDX-License-Identifier: MIT */
#include "fabric.h"

#include <algorithm>
#include <utility>

namespace sim
{

fabric::fabric(const port_set &with_room, std::function<void(const port &, const frame &)> to_cpu)
    : with_room_(with_room), to_cpu_(std::move(to_cpu))
{
}

void fabric::attach(port &front)
{
    by_number_[front.config().number] = &front;
    front_.put(front.config().number, true);
    join(DEFAULT_VLAN, front, egress_tag::UNTAGGED);
}

void fabric::ingress(port &at, frame &&incoming)
{
    if (!at.take_in(incoming))
        return;
    if (incoming.damaged)
        at.counters.fcs_errors++;
    else if (!cpu_macs_.empty() && cpu_macs_.count(incoming.destination()))
        to_cpu_(at, incoming);
    else if (!broadcast_test)
        forward(at, incoming);
    else if (!incoming.tag)
        flood_everywhere(incoming);
}

/* A tag of VLAN 0 only carries a priority. */
static uint16_t vlan_of(const port &at, const frame &incoming)
{
    const uint16_t vlan = incoming.tag.value_or(0) & VLAN_MASK;
    return vlan != 0 ? vlan : at.pvid;
}

static void send_out(port &to, egress_tag tagging, uint16_t vlan, const frame &incoming)
{
    auto leaving = incoming;
    if (tagging == egress_tag::UNTAGGED)
        leaving.tag.reset();
    else if (!leaving.tag || (*leaving.tag & VLAN_MASK) != vlan)
        leaving.tag = vlan;
    to.out.send(std::move(leaving));
}

void fabric::forward(const port &at, const frame &incoming)
{
    const auto vlan = vlan_of(at, incoming);
    if (!statics_.empty() && statics_.count({&at, vlan, incoming.destination()}))
        return to_cpu_(at, incoming);
    /* Nothing is learned, so a frame to one address floods like a broadcast; only the default VLAN, where nobody set
     * that up, holds it back. */
    const bool held_back = vlan == DEFAULT_VLAN && !incoming.to_many();
    const auto number = at.config().number;
    if (vlan > MAX_VLAN || held_back || !vlans_[vlan].members.has(number)) {
        dropped_++;
        return;
    }
    const auto &entry = vlans_[vlan];
    entry.members.for_each_also_in(with_room_, [&](uint32_t to) {
        if (to != number)
            send_out(*by_number_[to], entry.untagged.has(to) ? egress_tag::UNTAGGED : egress_tag::TAGGED, vlan,
                     incoming);
    });
}

void fabric::flood_everywhere(const frame &incoming)
{
    front_.for_each_also_in(
        with_room_, [&](uint32_t to) { send_out(*by_number_[to], egress_tag::TAGGED, DEFAULT_VLAN, incoming); });
}

void fabric::add_cpu_mac(const mac_address &mac)
{
    cpu_macs_.insert(mac);
}

bool fabric::remove_cpu_mac(const mac_address &mac)
{
    return cpu_macs_.erase(mac) != 0;
}

void fabric::join(uint32_t vlan, const port &member, egress_tag tagging)
{
    vlans_[vlan].members.put(member.config().number, true);
    vlans_[vlan].untagged.put(member.config().number, tagging == egress_tag::UNTAGGED);
}

void fabric::leave(uint32_t vlan, const port &member)
{
    vlans_[vlan].members.put(member.config().number, false);
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
