/* SPDX-License-Identifier: MIT
 *
 * One port: what it can do, how it is set, what it has counted.
 */
#ifndef SIM_PORT_H
#define SIM_PORT_H

#include <cstdint>
#include <vector>

#include "board_config.h"

namespace sim
{

/* A frame from its destination MAC on, without FCS; damaged says that its FCS does not fit. */
struct frame {
    std::vector<uint8_t> bytes;
    bool damaged = false;
};

struct port_counters {
    uint64_t in_pkts = 0;
    uint64_t ex_pkts = 0;
    uint64_t fcs_errors = 0;
};

class port
{
  public:
    explicit port(const port_config &config);

    const port_config &config() const
    {
        return config_;
    }
    uint32_t speed() const
    {
        return modes_[medium_].speed;
    }
    uint32_t medium() const
    {
        return medium_;
    }

    port_status_row status() const;

    /* Takes over speed, medium, duplex and the host's words; false, and nothing changes, when the port cannot do that.
     * A port with one medium ignores the medium asked for. A combo port that is given the other medium with its present
     * speed returns to the mode that it last had on that medium. */
    bool set_status(const port_status_row &wanted);

    /* Counts a frame that arrives and lets this port's faults have it. False when the frame is lost. */
    bool take_in(frame &arrived);

    bool on = true;
    bool link = false; /* kept by the port's wire */
    port_counters counters;

  private:
    uint32_t ability_word(uint32_t medium) const
    {
        return medium == FACMSG_MEDIUM_FIBER ? config_.ability.fiber : config_.ability.copper;
    }

    port_config config_;
    uint32_t medium_;
    std::array<port_mode, 2> modes_;
    uint32_t host_word_0_;
    uint32_t host_word_5_;
    uint64_t arrivals_ = 0;
};

} // namespace sim

#endif
