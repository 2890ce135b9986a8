/* SPDX-License-Identifier: MIT
 *
 * The two checks that every PoE test makes of a listed port: its power state, and whether overload trips.
 *
 * Entry k of g_test_ports and of every array of the reply belong to the same port; k, first and end lie within 0 to
 * FACMSG_MAX_PORTS. They log in their own name, wait for nothing, and run on the thread that runs a request.
 */
#ifndef POE_TESTS_POE_CHECKS_H
#define POE_TESTS_POE_CHECKS_H

#include "facmsg.h"

/* Power limits in milliwatts. */
constexpr uint32_t POE_RESTORE_LIMIT_MW = 30000;
constexpr uint32_t HPOE_RESTORE_LIMIT_MW = 100000;

/* Checks the power states of entries 0 to count-1, or first to end-1, and writes a code where a state is not good and
 * no earlier code stands: a facmsg_poe_code, with the driver's detail in the upper half where the state has no code of
 * its own. The high-power variant knows states 3 and 4. 0 when all are good, else 1. */
int facmsg_get_port_poe_status(int count, uint32_t *state_code);
int facmsg_get_port_hpoe_status(int first, int end, uint32_t *state_code);

/* Lowers the port's power limit to 3 W, below what its load draws, and expects overload; then restores the limit, to
 * POE_RESTORE_LIMIT_MW or restore_mw. Writes overload_code[k]: 0, the code of the step that failed, or that overload
 * did not trip with the driver's information in the upper half. 0 on pass, else 1. */
int port_poe_overload_test(uint32_t k, uint32_t port, poe_test_reply *reply);
int port_hpoe_overload_test(uint32_t k, uint32_t port, poe_test_reply *reply, uint32_t restore_mw);

#endif
