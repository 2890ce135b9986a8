/* SPDX-License-Identifier: MIT
 *
 * The PoE controller and its outputs. An output that is on looks for a device, gives it power, and shuts down when the
 * device draws more than the output's limit.
 */
#ifndef SIM_POE_H
#define SIM_POE_H

#include <map>

#include "board_config.h"
#include "event_clock.h"

namespace sim
{

/* As the power state word numbers them. */
enum class poe_state : uint32_t {
    OFF = 0,
    POWERED = 1,
    SEARCHING = 2,  /* no device found, or none yet */
    OVERLOADED = 3, /* shut down: the device drew more than the limit */
    REFUSED = 4,    /* the device's class asks for more than the port can ever give */
    NO_SUPPLY = 5,  /* the supply is too low; the word's upper half is its voltage in units of 10 mV */
};

struct vop_reading {
    uint32_t status; /* 0: the supply is in its range, 1: it is not */
    uint32_t supply_mv;
};

class poe_port
{
  public:
    /* On from the start. The clock must outlive the port, and the port must not move: it orders events. */
    poe_port(event_clock &clock, const poe_config &controller, const port_config &config);
    poe_port(const poe_port &) = delete;
    poe_port &operator=(const poe_port &) = delete;

    void enable(bool on);
    void set_limit(uint32_t limit_mw);

    /* Without power while the controller is down; then as at power-up: on, highest limit. */
    void stop();
    void start();

    poe_state state() const
    {
        return state_;
    }
    uint32_t limit_mw() const
    {
        return limit_mw_;
    }
    uint32_t state_word() const;
    uint32_t power_mw() const;
    /* Class of the device, when one has power. */
    std::optional<uint32_t> pd_class() const;
    /* What the controller measures at an output that is off. */
    std::optional<vop_reading> measure_vop() const;

  private:
    uint32_t seen_class() const;
    void search();
    poe_state state_after_search() const;
    void check_limit();

    event_clock &clock_;
    const time_us detect_us_;
    const uint32_t supply_mv_;
    const uint32_t highest_limit_mw_;
    const std::optional<poe_load> load_;
    const poe_faults faults_;
    poe_state state_ = poe_state::OFF;
    uint32_t limit_mw_ = 0;
    uint32_t overloads_ = 0; /* how often the draw has been above the limit */
    uint64_t era_ = 0;       /* changes with every loss of power; outdates a search */
};

class poe_controller
{
  public:
    poe_controller(event_clock &clock, const board_config &board);

    /* A port with PoE; null when there is none of that number. */
    poe_port *find(uint32_t number);

    /* Starts the upgrade to new_firmware, which takes upgrade_us. */
    void upgrade();
    time_us upgrade_us() const
    {
        return time_us{config_.upgrade_ms} * 1000;
    }
    uint32_t firmware() const
    {
        return firmware_;
    }
    uint32_t new_firmware() const
    {
        return config_.new_firmware;
    }

  private:
    event_clock &clock_;
    const poe_config config_;
    std::map<uint32_t, poe_port> ports_; /* by number */
    uint32_t firmware_;
};

} // namespace sim

#endif
