/* SPDX-License-Identifier: MIT
 *
 * Counts of received test frames, per port.
 */
#ifndef PACKET_RECEIVE_H
#define PACKET_RECEIVE_H

#include <cstdint>

/* At most this many ports are counted for the life of the process; frames of further ports are not. */
constexpr uint32_t COUNTED_PORTS = 256;

constexpr uint32_t FPGA_REPLY_SIZE = 128;

#endif
