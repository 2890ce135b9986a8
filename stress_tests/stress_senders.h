/* SPDX-License-Identifier: MIT
 *
 * Injecting stress frames through the CPU port. All return 0, or -1 when a frame could not be built or sent, which ends
 * them, or when a phy id could not be read, which does not.
 */
#ifndef STRESS_TESTS_STRESS_SENDERS_H
#define STRESS_TESTS_STRESS_SENDERS_H

#include "facmsg.h"

/* The eight frames of the flow pressure test, out of one port. */
int vexa_send_packet_pressure_use_cpsp(uint32_t port);

/* The sixteen frames of the loopback tests out of each port of every pair, in the pair's VLAN; the last port of an odd
 * list has its VLAN to itself. */
int vexa_send_ess_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count);

/* The sixteen frames of the loopback tests out of the first port, in VLAN 1. */
int vexa_send_ess_bc_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count);

/* Serpentine frames out of the first port, in bursts of 10000 until 30 s have passed. *sent receives their number, and
 * is left alone when sending failed. */
int vexa_send_ess_serpentine_flow_use_cpsp(const uint32_t *ports, uint32_t count, uint32_t *sent);

#endif
