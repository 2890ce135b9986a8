/* SPDX-License-Identifier: MIT
 *
 * The latest FPGA reply, as the receive hook keeps it. The hook itself and its counts are in facmsg.h.
 *
 * The hook runs on the host's threads, these functions on the thread that runs a request. What they share they share
 * by atomic words: there is no lock in the library, for the hook must not wait.
 */
#ifndef PACKET_RECEIVE_H
#define PACKET_RECEIVE_H

#include <cstdint>

/* Bytes of the reply that are kept, from its destination MAC on; zero after the frame's end. A longer one is cut. */
constexpr uint32_t FPGA_REPLY_SIZE = 128;

/* Zeroes the reply, so that an old one is not taken for the next, and copies it: all zeros when none has come. Neither
 * fails. A reply that arrives meanwhile may be half in a copy, whole by 32-bit words. */
void clear_fpga_reply();
void copy_fpga_reply(uint8_t (&to)[FPGA_REPLY_SIZE]);

#endif
