/* SPDX-License-Identifier: MIT */
#include "frame.h"

#include <algorithm>
#include <utility>

#include "ability.h"

namespace sim
{

static constexpr size_t TAG_AT = 12;
static constexpr size_t TAG_SIZE = 4;
static constexpr uint8_t TAG_TYPE[] = {0x81, 0x00};

frame::frame(std::span<const uint8_t> bytes)
{
    const bool tagged = bytes.size() >= TAG_AT + TAG_SIZE + 2 &&
                        std::equal(std::begin(TAG_TYPE), std::end(TAG_TYPE), bytes.begin() + TAG_AT);
    std::vector<uint8_t> untagged(bytes.begin(), bytes.end());
    if (tagged) {
        tag = static_cast<uint16_t>(bytes[TAG_AT + 2] << 8 | bytes[TAG_AT + 3]);
        untagged.erase(untagged.begin() + TAG_AT, untagged.begin() + TAG_AT + TAG_SIZE);
    }
    untagged_ = std::make_shared<const std::vector<uint8_t>>(std::move(untagged));
}

std::vector<uint8_t> frame::bytes() const
{
    auto all = *untagged_;
    if (tag) {
        const uint8_t tag_bytes[] = {TAG_TYPE[0], TAG_TYPE[1], static_cast<uint8_t>(*tag >> 8),
                                     static_cast<uint8_t>(*tag)};
        all.insert(all.begin() + TAG_AT, std::begin(tag_bytes), std::end(tag_bytes));
    }
    return all;
}

size_t frame::size() const
{
    return untagged_->size() + (tag ? TAG_SIZE : 0);
}

mac_address frame::destination() const
{
    mac_address mac;
    std::copy_n(untagged_->begin(), mac.size(), mac.begin());
    return mac;
}

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
    auto &[content, wire_ns] = queue_[first_];
    auto first = std::move(*content);
    content.reset();
    first_ = (first_ + 1) % QUEUE_FRAMES;
    waiting_--;
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
