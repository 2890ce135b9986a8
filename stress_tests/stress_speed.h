/* SPDX-License-Identifier: MIT
 *
 * The speeds of the stress tests, chosen by kind of port.
 */
#ifndef STRESS_TESTS_STRESS_SPEED_H
#define STRESS_TESTS_STRESS_SPEED_H

#include "facmsg.h"

/* Rows of the speed tables, 0 to 2, one for each kind of port; a higher number is not a faster one for fiber. */
struct speed_index {
    uint32_t copper;
    uint32_t ex_copper;
    uint32_t fiber;
};

/* The fastest each kind of port has: the loopback and PRBS tests run at it. */
constexpr speed_index FASTEST = {2, 2, 1};

/* Sets every port to the speed that its kind has at these indices, and reports the codes in *choice, 255 for extended
 * copper that the switch does not have. What the ports can do must stand in g_port_ability. A port whose type cannot be
 * read keeps its speed, one of no known kind gets that of the port before it in the list. 0, or 1 after an error line
 * at the first port that refuses, which ends it. */
int vexa_port_speed(uint32_t unit, const uint32_t *ports, uint32_t count, speed_index index, speed_choice *choice);

#endif
