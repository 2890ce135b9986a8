/* SPDX-License-Identifier: MIT
 *
 * A board as its file describes it: plain values, already checked. docs/simulator.md is the reference of the file.
 */
#ifndef SIM_BOARD_CONFIG_H
#define SIM_BOARD_CONFIG_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "facmsg_driver.h"

namespace sim
{

/* A powered device at the end of a port's cable. */
struct poe_load {
    uint32_t pd_class = 0; /* 0 to 8 */
    uint32_t draw_mw = 0;  /* what it draws as soon as it has power */
};

/* What is wrong with one port's PoE. */
struct poe_faults {
    bool no_detection = false;          /* the controller does not see the device */
    bool stays_off = false;             /* the output cannot be switched on */
    bool stays_on = false;              /* the output cannot be switched off */
    bool never_trips = false;           /* draw above the limit is not noticed ... */
    uint32_t trips_from = 1;            /* ... or not before the n-th time */
    std::optional<uint32_t> seen_class; /* the device signs with this class instead of its own */
    std::optional<uint32_t> supply_mv;  /* the port's own supply, when it is not the board's */
};

struct poe_config {
    uint32_t supply_mv = 54000;
    uint32_t detect_ms = 1500;  /* from the output going on to power at the device */
    uint32_t firmware = 0x0105; /* running at power-up */
    uint32_t new_firmware = 0x0106;
    uint32_t upgrade_ms = 20000;
};

/* How a port runs on one medium. */
struct port_mode {
    uint32_t speed = 0;  /* speed code */
    uint32_t duplex = 0; /* 0 automatic, 1 half, 2 full */
    bool operator==(const port_mode &) const = default;
};

/* What is wrong with one port. 0 means: nothing. */
struct port_faults {
    bool dead_link = false;     /* the link never comes up */
    uint32_t late_ms = 0;       /* added to the link-up time */
    uint32_t flap_up_ms = 0;    /* the link stays up this long, ... */
    uint32_t flap_down_ms = 0;  /* ... then down this long, again and again */
    uint32_t lose_every = 0;    /* every n-th frame that comes in disappears */
    uint32_t damage_every = 0;  /* every n-th frame that comes in has a wrong frame check sequence */
    bool stuck_counter = false; /* the count of received frames stands still */
    uint32_t prbs_errors_per_s = 0;
    poe_faults poe;
};

struct port_config {
    uint32_t number = 0;
    uint32_t phy_id = 0;
    port_ability_row ability{};
    uint32_t medium = FACMSG_MEDIUM_COPPER; /* at power-up */
    std::array<port_mode, 2> modes;         /* by medium, at power-up */
    uint32_t link_up_ms = 0;
    uint32_t host_word_0 = 0;
    uint32_t host_word_5 = 0;
    std::optional<poe_load> load; /* for a port with PoE */
    port_faults faults;
    bool faces_fpga = false; /* internal: no abilities, not flooded to */
};

/* A driver function that fails now and then. */
struct call_fault {
    std::string slot;
    std::optional<uint32_t> port; /* only calls for this port */
    uint32_t from_call = 1;       /* the first call that fails, counted from 1 */
    uint32_t calls = 0;           /* how many fail; 0: all from then on */
    int result = -1;
};

struct board_config {
    std::string name;
    std::string description;
    uint32_t rate_divisor = 1000;
    uint32_t min_wire_mbps = 10;
    uint32_t cpu_frame_us = 100;
    uint32_t boot_ms = 2000;
    std::map<uint32_t, port_config> ports;
    std::vector<std::pair<uint32_t, uint32_t>> cables; /* of front ports; a plug has the same port at both ends */
    bool fpga_silent = false;
    std::vector<call_fault> call_faults;
    poe_config poe;
};

} // namespace sim

#endif
