/* SPDX-License-Identifier: MIT
 *
 * The simulated switch: ports, wires, fabric and CPU on one clock.
 */
#include "board.h"

#include <algorithm>
#include <utility>

namespace sim
{

board::board(board_config config)
    : cpu(clock), fabric([this](const port &from, const frame &f) { cpu.receive(from, f); }), calls(config.call_faults),
      poe(clock, config), config_(std::move(config))
{
    for (const auto &[number, description] : config_.ports)
        ports_.try_emplace(number, description);
    for (const auto &[a, b] : config_.cables)
        connect(a, b);
    for (auto &cable : wires_)
        cable->restart();
    clock.run_until(time_us{config_.boot_ms} * 1000);
}

void board::connect(uint32_t number_a, uint32_t number_b)
{
    auto &cable = wires_.emplace_back(std::make_unique<wire>(
        clock, wire_rate{config_.rate_divisor, config_.min_wire_mbps}, ports_.at(number_a), ports_.at(number_b),
        [this](port &at, frame &&arrived) { fabric.ingress(at, std::move(arrived)); }));
    wire_of_[number_a] = wire_of_[number_b] = cable.get();
}

port *board::find_port(uint32_t number)
{
    const auto found = ports_.find(number);
    return found == ports_.end() ? nullptr : &found->second;
}

port *board::find_phy(uint32_t phy_id)
{
    const auto found =
        std::find_if(ports_.begin(), ports_.end(), [=](auto &entry) { return entry.second.config().phy_id == phy_id; });
    return found == ports_.end() ? nullptr : &found->second;
}

void board::restart_link(const port &changed)
{
    const auto found = wire_of_.find(changed.config().number);
    if (found != wire_of_.end())
        found->second->restart();
}

bool board::set_status(port &changed, const port_status_row &wanted)
{
    const auto before = changed.status();
    if (!changed.set_status(wanted))
        return false;
    const auto after = changed.status();
    if (before.speed != after.speed || before.medium != after.medium || before.duplex != after.duplex)
        restart_link(changed);
    return true;
}

void board::switch_port(port &changed, bool on)
{
    if (std::exchange(changed.on, on) != on)
        restart_link(changed);
}

void board::transmit(port &out, std::span<const uint8_t> bytes)
{
    cpu.capture(bytes);
    const auto found = wire_of_.find(out.config().number);
    if (found != wire_of_.end())
        found->second->send(out, {{bytes.begin(), bytes.end()}, false});
}

} // namespace sim
