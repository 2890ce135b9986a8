/* SPDX-License-Identifier: MIT
 *
 * The way out of a port: a bounded queue that a wire empties at its rate.
 */
#ifndef SIM_EGRESS_H
#define SIM_EGRESS_H

#include <functional>
#include <vector>

#include "event_clock.h"
#include "frame.h"

namespace sim
{

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

    /* Counts what has left in transmitted. Orders events on the clock, so it must not move. */
    egress(event_clock &clock, wire_rate rate, uint64_t &transmitted);
    egress(const egress &) = delete;
    egress &operator=(const egress &) = delete;

    /* From now on frames leave at a speed code's rate and go to far_end. Closing loses what waits. */
    void open(uint32_t speed, sink far_end);
    void close();

    /* Queues a frame; lost when the way is closed or the queue is full. */
    bool has_room() const
    {
        return far_end_ && waiting_ < queue_.size();
    }
    void send(frame &&sent);

    /* How long a sender that waits for room has to wait; 0 while there is plenty. */
    time_us room_in() const;

  private:
    void start_next();
    void finish();
    const frame &front() const
    {
        return *queue_[first_];
    }

    event_clock &clock_;
    const wire_rate rate_;
    uint64_t &transmitted_;
    sink far_end_;
    uint32_t speed_ = 0;
    std::vector<std::optional<frame>> queue_; /* a ring */
    size_t first_ = 0;
    size_t waiting_ = 0;      /* includes the frame that is on its way */
    uint64_t free_at_ns_ = 0; /* when the wire has sent that frame */
    uint64_t era_ = 0;        /* changes when the way closes; outdates what was under way */
};

} // namespace sim

#endif
