/* SPDX-License-Identifier: MIT
 *
 * The way out of a port: a bounded queue that a wire empties at its rate.
 */
#ifndef SIM_EGRESS_H
#define SIM_EGRESS_H

#include <bit>
#include <functional>
#include <vector>

#include "event_clock.h"
#include "facmsg_protocol.h"
#include "frame.h"

namespace sim
{

/* A set of ports by number, quick to intersect: a full queue costs a flooded frame nothing. */
class port_set
{
  public:
    void put(uint32_t number, bool in)
    {
        const auto bit = uint64_t{1} << (number - 1) % 64;
        auto &word = words_[(number - 1) / 64];
        word = in ? word | bit : word & ~bit;
    }

    bool has(uint32_t number) const
    {
        return words_[(number - 1) / 64] >> (number - 1) % 64 & 1;
    }

    /* Calls use(number) for every port of this set that is also in the other, ascending. */
    template <class F> void for_each_also_in(const port_set &other, F use) const
    {
        for (uint32_t i = 0; i < WORDS; i++) {
            for (auto both = words_[i] & other.words_[i]; both; both &= both - 1)
                use(i * 64 + static_cast<uint32_t>(std::countr_zero(both)) + 1);
        }
    }

  private:
    static constexpr uint32_t WORDS = FACMSG_MAX_PORTS / 64;
    uint64_t words_[WORDS] = {};
};

/* How fast wires carry frames: the line rate divided, but not below the floor. */
struct wire_rate {
    uint64_t divisor;
    uint64_t floor_mbps;

    /* Time that a frame of length bytes (without FCS) occupies a wire of a speed code, in ns; at least 1. */
    uint64_t frame_ns(uint32_t speed, size_t length) const;
};

class egress
{
  public:
    using sink = std::function<void(frame &&)>;

    /* Of the port with that number, which is among those with room while frames can be sent. Counts what has left in
     * transmitted. Orders events on the clock, so it must not move. */
    egress(event_clock &clock, wire_rate rate, uint32_t number, port_set &with_room, uint64_t &transmitted);
    egress(const egress &) = delete;
    egress &operator=(const egress &) = delete;

    /* From now on frames leave at a speed code's rate and go to far_end. Closing loses what waits. */
    void open(uint32_t speed, sink far_end);
    void close();

    /* Queues a frame; lost when there is no room. */
    void send(frame &&outgoing);

    /* How long a sender that waits for room has to wait; 0 while there is plenty. */
    time_us room_in() const;

  private:
    void put_in_queue(frame &&outgoing);
    frame take_from_queue();
    void start_next();
    void finish();
    event_clock &clock_;
    const wire_rate rate_;
    const uint32_t number_;
    port_set &with_room_;
    uint64_t &transmitted_;
    sink far_end_;
    uint32_t speed_ = 0;
    struct entry {
        std::optional<frame> waiting;
        uint64_t wire_ns;
    };
    std::vector<entry> queue_; /* a ring */
    size_t first_ = 0;
    size_t waiting_ = 0; /* includes the frame that is on its way */
    uint64_t waiting_ns_ = 0;
    uint64_t free_at_ns_ = 0; /* when the wire has sent the frame on its way */
    uint64_t era_ = 0;        /* changes when the way closes; outdates what was under way */
};

} // namespace sim

#endif
