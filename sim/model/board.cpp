/* SPDX-License-Identifier: MIT
 *
 * The simulated switch: ports, wires, fabric and CPU on one clock.
 */
#include "board.h"

#include <algorithm>
#include <utility>

namespace sim
{

/* How long the FPGA takes over a request. */
static constexpr time_us FPGA_ANSWER_US = 500;

board::board(board_config config)
    : cpu(clock), fabric(with_room_, [this](const port &from, const frame &f) { cpu.receive(from, f); }),
      fpga(config.fpga_silent), calls(config.call_faults), poe(clock, config), config_(std::move(config))
{
    for (const auto &[number, description] : config_.ports) {
        auto &added = ports_.try_emplace(number, description, clock, rate(), with_room_).first->second;
        by_phy_[description.phy_id] = &added;
        description.faces_fpga ? connect_fpga(added) : connect(added);
    }
    for (const auto &[a, b] : config_.cables)
        add_wire(wire::CABLE, ports_.at(a), ports_.at(b),
                 [this](port &at, frame &&arrived) { fabric.ingress(at, std::move(arrived)); });
    for (auto &made : wires_)
        made->restart();
    clock.run_until(time_us{config_.boot_ms} * 1000);
}

wire_rate board::rate() const
{
    return {config_.rate_divisor, config_.min_wire_mbps};
}

void board::add_wire(wire::kind made_of, port &end_a, port &end_b, wire::arrival arrive)
{
    auto *made = wires_.emplace_back(std::make_unique<wire>(clock, made_of, end_a, end_b, std::move(arrive))).get();
    wires_of_[&end_a].push_back(made);
    if (&end_b != &end_a)
        wires_of_[&end_b].push_back(made);
}

void board::connect(port &front)
{
    fabric.attach(front);
    add_wire(wire::PHY_LOOP, front, front,
             [this](port &at, frame &&arrived) { fabric.ingress(at, std::move(arrived)); });
}

/* To the port the FPGA is like a plug that answers something else. */
void board::connect_fpga(port &facing)
{
    add_wire(wire::CABLE, facing, facing, [this](port &at, frame &&request) {
        if (auto answer = fpga.handle(request))
            clock.after(FPGA_ANSWER_US,
                        [this, &at, moving = std::move(*answer)]() mutable { fabric.ingress(at, std::move(moving)); });
    });
}

port *board::find_port(uint32_t number)
{
    const auto found = ports_.find(number);
    return found == ports_.end() ? nullptr : &found->second;
}

port *board::find_phy(uint32_t phy_id)
{
    const auto found = by_phy_.find(phy_id);
    return found == by_phy_.end() ? nullptr : found->second;
}

void board::restart_link(const port &changed)
{
    for (auto *attached : wires_of_[&changed])
        attached->restart();
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

void board::loop_phy(port &changed, bool looped)
{
    if (std::exchange(changed.looped, looped) == looped)
        return;
    changed.link_down(); /* the wire that it has left no longer does that */
    restart_link(changed);
}

bool board::prbs_locked(const port &checking) const
{
    const auto number = checking.config().number;
    const auto sends = [&](uint32_t other) { return ports_.at(other).prbs.running(); };
    const auto reaches = [&](const auto &cable) {
        return (cable.first == number && sends(cable.second)) || (cable.second == number && sends(cable.first));
    };
    return checking.link && (checking.looped || std::any_of(config_.cables.begin(), config_.cables.end(), reaches));
}

void board::transmit(port &out, std::span<const uint8_t> bytes)
{
    cpu.capture(bytes);
    out.out.send(frame(bytes));
}

} // namespace sim
