/* SPDX-License-Identifier: MIT
 *
 * A cable between two ports, a loopback plug in one, or the loop inside a PHY: brings the link up.
 */
#ifndef SIM_WIRE_H
#define SIM_WIRE_H

#include <array>
#include <functional>

#include "event_clock.h"
#include "port.h"

namespace sim
{

class wire
{
  public:
    using arrival = std::function<void(port &at, frame &&)>;

    /* What the wire is made of: a looped port is attached to the loop in its PHY, any other to its cable or plug. */
    enum kind { CABLE, PHY_LOOP };

    /* end_a and end_b may be the same port; arrive is called for every frame that gets to the other end. The clock and
     * the ports must outlive the wire, and the wire must not move: it orders events on the clock. */
    wire(event_clock &clock, kind material, port &end_a, port &end_b, arrival arrive);
    wire(const wire &) = delete;
    wire &operator=(const wire &) = delete;

    /* To be called after a change at an end: takes the link down and, when both ends fit, starts bringing it up. */
    void restart();

  private:
    bool attached(const port &end) const
    {
        return end.looped == (material_ == PHY_LOOP);
    }
    bool ends_fit() const;
    void link_down();
    void bring_up(time_us delay);
    void came_up();
    void drop();

    event_clock &clock_;
    const kind material_;
    const std::array<port *, 2> ends_;
    uint64_t era_ = 0; /* changes with every loss of link; outdates what was under way */
    const arrival arrive_;
};

} // namespace sim

#endif
