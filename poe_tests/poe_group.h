/* SPDX-License-Identifier: MIT
 *
 * PoE ports in groups: listing them, switching them together, and the procedure that tests one group. It runs on the
 * thread that runs a request; `op` is the request in whose name a line is logged, though the checks log in their own.
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

/* How a group is tested. Both return 0 when all is good, and write the codes of what is not to the reply. Entry k is
 * the port's in g_test_ports and in every array of the reply. */
struct poe_method {
    int (*check_states)(poe_group group, poe_test_reply *reply);
    int (*check_overload)(uint32_t k, uint32_t port, poe_test_reply *reply);
};
extern const poe_method POE_METHOD;      /* standard PoE ports tested alone */
extern const poe_method HPOE_METHOD;     /* high-power ports */
extern const poe_method HPOE_POE_METHOD; /* standard PoE ports tested beside high-power ones */

/* Appends the ports with any of these ability bits to g_test_ports, which has `count` entries, and their numbers' low
 * bytes to `ports`, which has room for FACMSG_MAX_PORTS. Returns the group they make; it may be empty. */
poe_group list_poe_ports(uint32_t unit, uint32_t ability, uint8_t *ports, uint32_t count, const char *op);

/* Switches the output of every port of the group, ignoring failures. */
void switch_poe_group(poe_group group, uint32_t enable);

/* Checks states, classes, overload and power-off of a group whose output is on, and leaves it off. A failure is noted
 * in the reply and ends nothing. Waits 11 s, and up to 20 s more for each port whose overload does not trip. */
void test_poe_group(poe_group group, const poe_method &method, poe_test_reply *reply, const char *op);

#endif
