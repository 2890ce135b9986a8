/* SPDX-License-Identifier: MIT
 *
 * The frames of the stress tests. Each builder returns a new frame that the caller frees, or null after an error line.
 */
#ifndef STRESS_TESTS_STRESS_FRAMES_H
#define STRESS_TESTS_STRESS_FRAMES_H

#include "facmsg.h"

constexpr uint32_t PATTERN_SIZE = 8;
constexpr uint8_t SERPENTINE_MAC[6] = {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/* A broadcast frame of VLAN 1 with 64, 128, 256, 512 or 1518 bytes; other lengths are refused. A frame of 64 bytes is
 * filled with the 16-bit pattern, a longer one with zeros. */
uint8_t *vexa_packet_vlan1(uint32_t phy_id, uint32_t length, uint16_t pattern);

/* A broadcast frame of the VLAN, untagged for VLAN 0, filled with the pattern. */
uint8_t *vexa_ess_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern, uint32_t vlan_id);

/* A frame to SERPENTINE_MAC of the type that the receive hook counts, filled with the pattern. */
uint8_t *vexa_ess_serpentine_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern);

#endif
