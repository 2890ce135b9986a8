/* SPDX-License-Identifier: MIT */
#include "board.h"

#include <algorithm>
#include <utility>

namespace sim
{

/* How long the FPGA takes over a request. */
static constexpr time_us FPGA_ANSWER_US = 500;

board::board(board_config config)
    : cpu(clock), fabric(with_room_, [this](const port &from, const frame &f) { cpu.receive(from, f); }),
      fpga(config.fpga_silent), poe(clock, config), config_(std::move(config))
{
    for (const auto &[number, description] : config_.ports) {
        auto &front = ports_.try_emplace(number, description, clock, rate(), with_room_).first->second;
        by_phy_[description.phy_id] = &front;
        description.faces_fpga ? connect_fpga(front) : connect(front);
    }
    for (const auto &[a, b] : config_.cables)
        add_wire(wire::CABLE, ports_.at(a), ports_.at(b),
                 [this](port &at, frame &&incoming) { fabric.ingress(at, std::move(incoming)); });
    for (auto &wire : wires_)
        wire->restart();
    clock.run_until(time_us{config_.boot_ms} * 1000);
}

wire_rate board::rate() const
{
    return {config_.rate_divisor, config_.min_wire_mbps};
}

void board::add_wire(wire::kind material, port &end_a, port &end_b, wire::arrival arrive)
{
    auto *connection =
        wires_.emplace_back(std::make_unique<wire>(clock, material, end_a, end_b, std::move(arrive))).get();
    wires_of_[&end_a].push_back(connection);
    if (&end_b != &end_a)
        wires_of_[&end_b].push_back(connection);
}

void board::connect(port &front)
{
    fabric.attach(front);
    add_wire(wire::PHY_LOOP, front, front,
             [this](port &at, frame &&incoming) { fabric.ingress(at, std::move(incoming)); });
}

/* To the port the FPGA is like a plug that answers something else. */
void board::connect_fpga(port &facing)
{
    add_wire(wire::CABLE, facing, facing, [this](port &at, frame &&request) {
        if (auto answer = fpga.handle(request))
            clock.after(FPGA_ANSWER_US,
                        [this, &at, reply = std::move(*answer)]() mutable { fabric.ingress(at, std::move(reply)); });
    });
}

port *board::find_port(uint32_t number)
{
    const auto row = ports_.find(number);
    return row == ports_.end() ? nullptr : &row->second;
}

port *board::find_phy(uint32_t phy_id)
{
    const auto row = by_phy_.find(phy_id);
    return row == by_phy_.end() ? nullptr : row->second;
}

void board::restart_link(const port &target)
{
    for (auto *attached : wires_of_[&target])
        attached->restart();
}

bool board::set_status(port &target, const port_status_row &setting)
{
    const auto before = target.status();
    if (!target.set_status(setting))
        return false;
    const auto after = target.status();
    if (before.speed != after.speed || before.medium != after.medium || before.duplex != after.duplex)
        restart_link(target);
    return true;
}

void board::switch_port(port &target, bool on)
{
    if (std::exchange(target.on, on) != on)
        restart_link(target);
}

void board::loop_phy(port &target, bool looped)
{
    if (std::exchange(target.looped, looped) == looped)
        return;
    target.link_down(); /* the wire that it has left no longer does that */
    restart_link(target);
}

bool board::prbs_locked(const port &checker) const
{
    const auto number = checker.config().number;
    const auto sends = [&](uint32_t other) { return ports_.at(other).prbs.running(); };
    const auto reaches = [&](const auto &cable) {
        return (cable.first == number && sends(cable.second)) || (cable.second == number && sends(cable.first));
    };
    return checker.link && (checker.looped || std::any_of(config_.cables.begin(), config_.cables.end(), reaches));
}

void board::transmit(port &out, std::span<const uint8_t> bytes)
{
    cpu.capture(bytes);
    out.out.send(frame(bytes));
}

} // namespace sim
