/* SPDX-License-Identifier: MIT */
#include "egress.h"

#include <algorithm>
#include <utility>

#include "ability.h"

namespace sim
{

/* On the wire every frame has a preamble of 8 bytes, 4 bytes FCS and a gap of 12, and is at least 60 bytes long. */
static constexpr size_t FRAME_OVERHEAD = 24;
static constexpr size_t SHORTEST_FRAME = 60;

/* A queue is full when it holds that much. */
static constexpr size_t QUEUE_FRAMES = 512;
static constexpr uint64_t QUEUE_NS = 1000000000;
static constexpr size_t PLENTY_BELOW_FRAMES = 64;

uint64_t wire_rate::frame_ns(uint32_t speed, size_t length) const
{
    const uint64_t bits = (std::max(length, SHORTEST_FRAME) + FRAME_OVERHEAD) * 8;
    const uint64_t kbps = std::max(speed_of(speed).mbps * 1000 / divisor, floor_mbps * 1000);
    return std::max<uint64_t>(bits * 1000000 / kbps, 1);
}

egress::egress(event_clock &clock, wire_rate rate, uint32_t number, port_set &with_room, uint64_t &transmitted)
    : clock_(clock), rate_(rate), number_(number), with_room_(with_room), transmitted_(transmitted),
      queue_(QUEUE_FRAMES)
{
}

void egress::open(uint32_t speed, sink far_end)
{
    speed_ = speed;
    far_end_ = std::move(far_end);
    free_at_ns_ = 0;
    with_room_.put(number_, true);
}

void egress::close()
{
    era_++;
    while (waiting_)
        take_from_queue();
    with_room_.put(number_, false);
}

void egress::put_in_queue(frame &&outgoing)
{
    const auto wire_ns = rate_.frame_ns(speed_, outgoing.size());
    queue_[(first_ + waiting_) % QUEUE_FRAMES] = {std::move(outgoing), wire_ns};
    waiting_++;
    waiting_ns_ += wire_ns;
    with_room_.put(number_, waiting_ < QUEUE_FRAMES && waiting_ns_ < QUEUE_NS);
}

frame egress::take_from_queue()
{
    auto &[waiting, wire_ns] = queue_[first_];
    auto first = std::move(*waiting);
    waiting.reset();
    first_ = (first_ + 1) % QUEUE_FRAMES;
    --waiting_;
    waiting_ns_ -= wire_ns;
    with_room_.put(number_, waiting_ns_ < QUEUE_NS);
    return first;
}

void egress::send(frame &&outgoing)
{
    if (!with_room_.has(number_))
        return;
    put_in_queue(std::move(outgoing));
    if (waiting_ > 1)
        return;
    free_at_ns_ = std::max(clock_.now() * 1000, free_at_ns_);
    start_next();
}

/* Nanoseconds add up inside, so that rounding to the clock does not slow a burst down. */
void egress::start_next()
{
    free_at_ns_ += queue_[first_].wire_ns;
    clock_.after((free_at_ns_ + 999) / 1000 - clock_.now(), [this, era = era_] {
        if (era == era_)
            finish();
    });
}

void egress::finish()
{
    auto sent = take_from_queue();
    transmitted_++;
    if (waiting_)
        start_next();
    far_end_(std::move(sent));
}

time_us egress::room_in() const
{
    return waiting_ < PLENTY_BELOW_FRAMES ? 0 : (free_at_ns_ + 999) / 1000 - clock_.now();
}

} // namespace sim
