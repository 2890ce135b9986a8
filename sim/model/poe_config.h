/* SPDX-License-Identifier: MIT
 *
 * The PoE side of a board as its file describes it. docs/simulator.md is the reference of the file.
 */
#ifndef SIM_POE_CONFIG_H
#define SIM_POE_CONFIG_H

#include <cstdint>
#include <optional>

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

} // namespace sim

#endif
