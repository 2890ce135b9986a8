/* SPDX-License-Identifier: MIT
 *
 * The latest FPGA reply, as the receive hook keeps it. The hook itself and its counts are in facmsg.h.
 */
#ifndef PACKET_RECEIVE_H
#define PACKET_RECEIVE_H

#include <cstdint>

/* Bytes of the reply that are kept, from its destination MAC on; zero after the frame's end. */
constexpr uint32_t FPGA_REPLY_SIZE = 128;

/* Both may run while a host's thread is in the hook, and neither fails: a copy is whole by 32-bit words, so a reply
 * that arrives meanwhile may be half in it. */
void clear_fpga_reply();
void copy_fpga_reply(uint8_t (&to)[FPGA_REPLY_SIZE]);

#endif
