/* SPDX-License-Identifier: MIT
 *
 * What the receive hook keeps: counts of test frames per port, and the latest FPGA reply.
 */
#ifndef PACKET_RECEIVE_H
#define PACKET_RECEIVE_H

#include <cstdint>

/* At most this many ports are counted for the life of the process; frames of further ports are not. */
constexpr uint32_t COUNTED_PORTS = 256;

/* The latest FPGA reply: a frame's first 128 bytes, zero behind its end. */
constexpr uint32_t FPGA_REPLY_SIZE = 128;

void clear_fpga_reply();
void copy_fpga_reply(uint8_t (&to)[FPGA_REPLY_SIZE]);

#endif
