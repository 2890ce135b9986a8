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
#include "port_set.h"

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

    /* Of the port with that number, which is among those with room while frames can be sent. Counts what has left in
     * transmitted. Orders events on the clock, so it must not move. */
    egress(event_clock &clock, wire_rate rate, uint32_t number, port_set &with_room, uint64_t &transmitted);
    egress(const egress &) = delete;
    egress &operator=(const egress &) = delete;

    /* From now on frames leave at a speed code's rate and go to far_end. Closing loses what waits. */
    void open(uint32_t speed, sink far_end);
    void close();

    /* Queues a frame; lost when there is no room. */
    void send(frame &&sent);

    /* How long a sender that waits for room has to wait; 0 while there is plenty. */
    time_us room_in() const;

  private:
    void put_in_queue(frame &&added);
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
