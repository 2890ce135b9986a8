/* SPDX-License-Identifier: MIT
 *
 * The way out of a port: a bounded queue that a wire empties at its rate.
 */
#include "egress.h"

#include <algorithm>
#include <utility>

#include "ability.h"

namespace sim
{

/* On the wire every frame has a preamble of 8 bytes, 4 bytes FCS and a gap of 12, and is at least 60 bytes long. */
static constexpr size_t FRAME_OVERHEAD = 24;
static constexpr size_t SHORTEST_FRAME = 60;

static constexpr size_t QUEUE_FRAMES = 512;
static constexpr size_t PLENTY_BELOW_FRAMES = 64;

uint64_t wire_rate::frame_ns(uint32_t speed, size_t length) const
{
    const uint64_t bits = (std::max(length, SHORTEST_FRAME) + FRAME_OVERHEAD) * 8;
    const uint64_t kbps = std::max(speed_mbps(speed) * 1000 / divisor, floor_mbps * 1000);
    return std::max<uint64_t>(bits * 1000000 / kbps, 1);
}

egress::egress(event_clock &clock, wire_rate rate, uint64_t &transmitted)
    : clock_(clock), rate_(rate), transmitted_(transmitted), queue_(QUEUE_FRAMES)
{
}

void egress::open(uint32_t speed, sink far_end)
{
    speed_ = speed;
    far_end_ = std::move(far_end);
    free_at_ns_ = 0;
}

void egress::close()
{
    ++era_;
    far_end_ = nullptr;
    std::fill(queue_.begin(), queue_.end(), std::nullopt);
    waiting_ = 0;
}

void egress::send(frame &&sent)
{
    if (!has_room())
        return;
    queue_[(first_ + waiting_) % QUEUE_FRAMES] = std::move(sent);
    if (++waiting_ > 1)
        return;
    free_at_ns_ = std::max(clock_.now() * 1000, free_at_ns_);
    start_next();
}

/* Nanoseconds add up inside, so that rounding to the clock does not slow a burst down. */
void egress::start_next()
{
    free_at_ns_ += rate_.frame_ns(speed_, front().size());
    clock_.after((free_at_ns_ + 999) / 1000 - clock_.now(), [this, era = era_] {
        if (era == era_)
            finish();
    });
}

void egress::finish()
{
    auto sent = std::move(*queue_[first_]);
    queue_[first_].reset();
    first_ = (first_ + 1) % QUEUE_FRAMES;
    --waiting_;
    ++transmitted_;
    if (waiting_)
        start_next();
    far_end_(std::move(sent));
}

time_us egress::room_in() const
{
    return waiting_ < PLENTY_BELOW_FRAMES ? 0 : (free_at_ns_ + 999) / 1000 - clock_.now();
}

} // namespace sim
