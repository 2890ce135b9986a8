/* SPDX-License-Identifier: MIT
 *
 * The frames of the stress tests: building them, and injecting them through the CPU port. Lengths are in bytes, without
 * the FCS; a pattern is PATTERN_SIZE bytes and repeats to the frame's end.
 */
#ifndef STRESS_TESTS_STRESS_FRAMES_H
#define STRESS_TESTS_STRESS_FRAMES_H

#include "facmsg.h"

constexpr uint32_t PATTERN_SIZE = 8;
constexpr uint8_t SERPENTINE_MAC[6] = {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/* ---- Builders: each returns a new frame that the caller frees, or null after an error line ---- */

/* A broadcast frame of VLAN 1 with 64, 128, 256, 512 or 1518 bytes; other lengths are refused. A frame of 64 bytes is
 * filled with the 16-bit pattern, a longer one with zeros. */
uint8_t *vexa_packet_vlan1(uint32_t phy_id, uint32_t length, uint16_t pattern);

/* A broadcast frame of the VLAN, untagged for VLAN 0, filled with the pattern. */
uint8_t *vexa_ess_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern, uint32_t vlan_id);

/* A frame to SERPENTINE_MAC of the type that the receive hook counts, filled with the pattern. */
uint8_t *vexa_ess_serpentine_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern);

/* ---- Senders: 0, or -1 when a frame could not be built or sent, which ends them, or when a phy id could not be read,
 * which does not ---- */

/* The eight frames of the flow pressure test, out of one port. */
int vexa_send_packet_pressure_use_cpsp(uint32_t port);

/* The sixteen frames of the loopback tests out of each port of every pair, in the pair's VLAN; the last port of an odd
 * list has its VLAN to itself. */
int vexa_send_ess_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count);

/* The sixteen frames of the loopback tests out of the first port, in VLAN 1. */
int vexa_send_ess_bc_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count);

/* Serpentine frames out of the first port, in bursts of 10000 until 30 s have passed. *send_count receives their
 * number, and is left alone when sending failed. */
int vexa_send_ess_serpentine_flow_use_cpsp(const uint32_t *ports, uint32_t count, uint32_t *send_count);

#endif
