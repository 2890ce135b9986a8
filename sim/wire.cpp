/* SPDX-License-Identifier: MIT
 *
 * A cable between two ports, or a loopback plug in one: brings the link up and carries frames.
 */
#include "wire.h"

#include <algorithm>
#include <utility>

#include "ability.h"

namespace sim
{

/* On the wire every frame has a preamble of 8 bytes, 4 bytes FCS and a gap of 12, and is at least 60 bytes long. */
static constexpr size_t FRAME_OVERHEAD = 24;
static constexpr size_t SHORTEST_FRAME = 60;

/* Frames that may wait for a lane; further ones are lost. */
static constexpr uint64_t LANE_QUEUE_FRAMES = 1024;

uint64_t wire_rate::frame_ns(uint32_t speed, size_t length) const
{
    const uint64_t bits = (std::max(length, SHORTEST_FRAME) + FRAME_OVERHEAD) * 8;
    const uint64_t kbps = std::max(speed_mbps(speed) * 1000 / divisor, floor_mbps * 1000);
    return std::max<uint64_t>(bits * 1000000 / kbps, 1);
}

wire::wire(event_clock &clock, wire_rate rate, port &end_a, port &end_b, arrival arrive)
    : clock_(clock), rate_(rate), ends_{&end_a, &end_b}, arrive_(std::move(arrive))
{
}

bool wire::ends_fit() const
{
    const auto &[a, b] = ends_;
    const auto alive = [](const port &end) { return end.on && !end.config().faults.dead_link; };
    return alive(*a) && alive(*b) && a->speed() == b->speed() && a->medium() == b->medium();
}

void wire::set_link(bool up)
{
    for (auto *end : ends_)
        end->link = up;
}

void wire::restart()
{
    ++era_;
    set_link(false);
    if (!ends_fit())
        return;
    time_us delay_ms = 0;
    for (const auto *end : ends_)
        delay_ms = std::max<time_us>(delay_ms, end->config().link_up_ms + end->config().faults.late_ms);
    bring_up(delay_ms * 1000);
}

void wire::bring_up(time_us delay)
{
    clock_.after(delay, [this, era = era_] {
        if (era == era_)
            came_up();
    });
}

void wire::came_up()
{
    set_link(true);
    free_at_ns_ = {};
    for (const auto *end : ends_) {
        if (const auto up_ms = end->config().faults.flap_up_ms)
            clock_.after(time_us{up_ms} * 1000, [this, era = era_] {
                if (era == era_)
                    drop();
            });
    }
}

void wire::drop()
{
    ++era_;
    set_link(false);
    time_us down_ms = 0;
    for (const auto *end : ends_)
        down_ms = std::max<time_us>(down_ms, end->config().faults.flap_down_ms);
    bring_up(down_ms * 1000);
}

/* The moment when the lane of an end has sent length more bytes, or 0 when too much waits there. Nanoseconds add up
 * inside, so that rounding does not slow a burst down. */
time_us wire::transmit_end(port &from, size_t length)
{
    auto &free_at_ns = free_at_ns_[&from == ends_[0] ? 0 : 1];
    const uint64_t now_ns = clock_.now() * 1000;
    const uint64_t frame_ns = rate_.frame_ns(from.speed(), length);
    const uint64_t start_ns = std::max(now_ns, free_at_ns);
    if (start_ns - now_ns > LANE_QUEUE_FRAMES * frame_ns)
        return 0;
    free_at_ns = start_ns + frame_ns;
    return (free_at_ns + 999) / 1000;
}

void wire::send(port &from, frame &&sent)
{
    if (!from.link)
        return;
    const auto end = transmit_end(from, sent.bytes.size());
    if (!end)
        return;
    auto &to = &from == ends_[0] ? *ends_[1] : *ends_[0];
    clock_.after(end - clock_.now(), [this, era = era_, &from, &to, moving = std::move(sent)]() mutable {
        if (era != era_)
            return;
        ++from.counters.ex_pkts;
        arrive_(to, std::move(moving));
    });
}

} // namespace sim
