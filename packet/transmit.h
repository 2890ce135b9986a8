/* SPDX-License-Identifier: MIT
 *
 * Bursts of test frames out of the CPU port, and the counts of those that came back.
 *
 * The port lists here run parallel to a state array: entry i of both belongs to the same port, and a port whose state
 * is FACMSG_PORT_NO_LINK is skipped.
 */
#ifndef PACKET_TRANSMIT_H
#define PACKET_TRANSMIT_H

#include "facmsg.h"

constexpr uint32_t TEST_FRAME_LENGTH = 128;
constexpr uint32_t TEST_FRAMES_PER_BURST = 50;
constexpr uint8_t TEST_FRAME_DESTINATION[6] = {0, 0, 0, 0, 0, 1};

/* A new test frame from the port with this phy id; the caller frees it. Null and length 0 when memory is short. */
uint8_t *factory_fill_test_packet_buffer(uint32_t phy_id, uint32_t *length);

/* Sends request->frame_count test frames back to back. 0 when all were sent, else -1. */
int vexa_send_packet_use_cpsp(const port_packet_req *request);

/* Sends one burst out of each port, 50 ms apart; sets each state to OK or TRANSMIT. Returns the outcome of the last
 * port that was not skipped: 0 or -1, 0 when there was none. */
int platform_send_packet(uint32_t unit, uint32_t *states, const uint32_t *ports, int count, uint32_t mode,
                         uint32_t tx_selector);

/* Replaces counts[i] by the port's receive count minus counts[i]: the absolute count over zeroes, the frames received
 * since over an earlier reading. A port without phy id keeps its count and gets state RECEIVE_COUNT. Returns -1 when
 * the last port that was not skipped had no phy id, else 0. */
int platform_recv_packet(uint32_t unit, uint32_t *states, const uint32_t *ports, int count, uint32_t *counts);

#endif
