/* SPDX-License-Identifier: MIT
 *
 * One port: what it can do, how it is set, what it has counted.
 */
#ifndef SIM_PORT_H
#define SIM_PORT_H

#include <cstdint>

#include "board_config.h"
#include "egress.h"

namespace sim
{

/* Status word: this bit when the checker has no sequence to lock on, the bit errors since the last reading below it. */
constexpr uint32_t PRBS_NO_LOCK = UINT32_C(1) << 31;

/* The pseudo-random bit sequence that a port's PHY sends and checks. */
class prbs_run
{
  public:
    bool running() const
    {
        return counted_from_.has_value();
    }
    void start(time_us now)
    {
        counted_from_ = now;
    }
    void stop()
    {
        counted_from_.reset();
    }

    /* The status word; counting starts anew. locked says whether a sequence comes in. */
    uint32_t read_and_clear(bool locked, uint32_t errors_per_s, time_us now);

  private:
    std::optional<time_us> counted_from_; /* nothing while no sequence is sent */
};

struct port_counters {
    uint64_t in_pkts = 0;
    uint64_t ex_pkts = 0;
    uint64_t fcs_errors = 0;
};

class port
{
  public:
    port(const port_config &config, event_clock &clock, wire_rate rate, port_set &with_room);
    port(const port &) = delete;
    port &operator=(const port &) = delete;

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
    bool set_status(const port_status_row &setting);

    /* Counts a frame that arrives and lets this port's faults have it. False when the frame is lost. */
    bool take_in(frame &incoming);

    /* For the port's wire: the link is there, frames go to far_end; and it is gone. */
    void link_up(egress::sink far_end);
    void link_down();

    bool on = true;
    bool link = false;
    bool looped = false;          /* the PHY sends what leaves back in, and ignores the cable */
    uint16_t pvid = DEFAULT_VLAN; /* of untagged frames that come in */
    port_counters counters;
    egress out;
    prbs_run prbs;

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
