/* SPDX-License-Identifier: MIT
 *
 * A cable between two ports, or a loopback plug in one: brings the link up and carries frames.
 */
#ifndef SIM_WIRE_H
#define SIM_WIRE_H

#include <array>
#include <functional>

#include "event_clock.h"
#include "port.h"

namespace sim
{

/* How fast wires carry frames: the line rate divided, but not below the floor. */
struct wire_rate {
    uint64_t divisor;
    uint64_t floor_mbps;

    /* Time that a frame of length bytes (without FCS) occupies a wire of a speed code, in ns; at least 1. */
    uint64_t frame_ns(uint32_t speed, size_t length) const;
};

class wire
{
  public:
    using arrival = std::function<void(port &at, frame &&)>;

    /* end_a and end_b may be the same port; arrive is called for every frame that gets to the other end. The clock and
     * the ports must outlive the wire, and the wire must not move: it orders events on the clock. */
    wire(event_clock &clock, wire_rate rate, port &end_a, port &end_b, arrival arrive);
    wire(const wire &) = delete;
    wire &operator=(const wire &) = delete;

    /* To be called after a change at an end: takes the link down and, when both ends fit, starts bringing it up. */
    void restart();

    /* Sends a frame from an end; it queues behind what that end sent before. Lost without a link, or when it drops. */
    void send(port &from, frame &&sent);

  private:
    bool ends_fit() const;
    void set_link(bool up);
    void bring_up(time_us delay);
    void came_up();
    void drop();
    time_us transmit_end(port &from, size_t length);

    event_clock &clock_;
    const wire_rate rate_;
    const std::array<port *, 2> ends_;
    std::array<uint64_t, 2> free_at_ns_{}; /* by end: when its lane is free again */
    uint64_t era_ = 0;                     /* changes with every loss of link; outdates what was under way */
    const arrival arrive_;
};

} // namespace sim

#endif
