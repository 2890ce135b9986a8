/* SPDX-License-Identifier: MIT
 *
 * PoE ports in groups: listing them, switching them together, the procedure that tests one group, and the checks that
 * it makes of a port. All of it runs on the thread that runs a request; `op` is the request in whose name a line is
 * logged, though the checks log in their own.
 *
 * Entry k of g_test_ports and of every array of a reply belong to the same port; k lies within 0 to FACMSG_MAX_PORTS.
 */
#ifndef POE_TESTS_POE_H
#define POE_TESTS_POE_H

#include "facmsg.h"

/* Entries first to end-1 of g_test_ports. */
struct poe_group {
    uint32_t first;
    uint32_t end;
};

/* States of an output. */
constexpr uint32_t OFF = 0;
constexpr uint32_t ON = 1;

/* Appends the ports with any of these ability bits to g_test_ports, which has `count` entries, and their numbers' low
 * bytes to `ports`, which has room for FACMSG_MAX_PORTS. Returns the group they make; it may be empty. */
poe_group list_poe_ports(uint32_t unit, uint32_t ability, uint8_t *ports, uint32_t count, const char *op);

/* Switches the output of every port of the group, ignoring failures. */
void switch_poe_group(poe_group group, uint32_t enable);

/* How a group is tested. Both return 0 when all is good, and write the codes of what is not to the reply. */
struct poe_method {
    int (*check_states)(poe_group group, poe_test_reply *reply);
    int (*check_overload)(uint32_t k, uint32_t port, poe_test_reply *reply);
};
extern const poe_method POE_METHOD;      /* standard PoE ports tested alone */
extern const poe_method HPOE_METHOD;     /* high-power ports */
extern const poe_method HPOE_POE_METHOD; /* standard PoE ports tested beside high-power ones */

/* Checks states, classes, overload and power-off of a group whose output is on, and leaves it off. A failure is noted
 * in the reply and ends nothing. Waits 11 s, and up to 20 s more for each port whose overload does not trip. */
void test_poe_group(poe_group group, const poe_method &method, poe_test_reply *reply, const char *op);

/* ---- Checks: they wait for nothing ---- */

/* Checks the power states of entries 0 to count-1, or first to end-1, and writes a code where a state is not good and
 * no earlier code stands: a facmsg_poe_code, with the driver's detail in the upper half where the state has no code of
 * its own. The high-power variant knows states 3 and 4. 0 when all are good, else 1. */
int facmsg_get_port_poe_status(int count, uint32_t *state_code);
int facmsg_get_port_hpoe_status(int first, int end, uint32_t *state_code);

/* Power limits in milliwatts. */
constexpr uint32_t POE_RESTORE_LIMIT_MW = 30000;
constexpr uint32_t HPOE_RESTORE_LIMIT_MW = 100000;

/* Lowers the port's power limit to 3 W, below what its load draws, and expects overload; then restores the limit, to
 * POE_RESTORE_LIMIT_MW or restore_mw. Writes overload_code[k]: 0, the code of the step that failed, or that overload
 * did not trip with the driver's information in the upper half. 0 on pass, else 1. */
int port_poe_overload_test(uint32_t k, uint32_t port, poe_test_reply *reply);
int port_hpoe_overload_test(uint32_t k, uint32_t port, poe_test_reply *reply, uint32_t restore_mw);

#endif
