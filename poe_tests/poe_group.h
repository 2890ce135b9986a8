/* SPDX-License-Identifier: MIT
 *
 * PoE ports in groups: listing them, switching them together, and the procedure that tests one group.
 */
#ifndef POE_TESTS_POE_GROUP_H
#define POE_TESTS_POE_GROUP_H

#include "facmsg.h"

/* Entries first to end-1 of g_test_ports. */
struct poe_group {
    uint32_t first;
    uint32_t end;
};

/* States of an output. */
constexpr uint32_t OFF = 0;
constexpr uint32_t ON = 1;

/* How a group is tested. */
struct poe_method {
    int (*check_states)(poe_group group, poe_test_reply *reply);
    int (*check_overload)(uint32_t k, uint32_t port, poe_test_reply *reply);
};
extern const poe_method POE_METHOD;      /* standard PoE ports tested alone */
extern const poe_method HPOE_METHOD;     /* high-power ports */
extern const poe_method HPOE_POE_METHOD; /* standard PoE ports tested beside high-power ones */

/* Whether the driver has all that the PoE tests need; logs otherwise. */
bool poe_test_supported(const char *op);

/* Appends the ports with any of these ability bits to the list, which has `count` entries, and to `ports`. Returns the
 * group they make. */
poe_group list_poe_ports(uint32_t unit, uint32_t ability, uint8_t *ports, uint32_t count, const char *op);

/* Switches the output of every port of the group, ignoring failures. */
void switch_poe_group(poe_group group, uint32_t enable);

/* Checks states, classes, overload and power-off of a group whose output is on, and leaves it off. Notes failures in
 * the reply. */
void test_poe_group(poe_group group, const poe_method &method, poe_test_reply *reply, const char *op);

#endif
