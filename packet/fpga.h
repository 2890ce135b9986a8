/* SPDX-License-Identifier: MIT
 *
 * What the FPGA requests need besides the access itself, which is in facmsg.h: the frames' addresses, the bounds of an
 * access, and the latest reply, as the receive hook keeps it.
 *
 * The hook runs on the host's threads, these functions on the thread that runs a request. What they share they share
 * by atomic words: there is no lock in the library, for the hook must not wait.
 */
#ifndef PACKET_FPGA_H
#define PACKET_FPGA_H

#include "facmsg.h"

/* The two addresses of FPGA frames. */
constexpr uint8_t FPGA_DESTINATION[6] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0A};
constexpr uint8_t FPGA_SOURCE[6] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0B};

/* Whether an access is within bounds; an error line in the name of op names what is not, and what is allowed. */
bool fpga_access_valid(uint32_t fpga_port, uint32_t length, uint32_t max_length, const char *op);

/* Bytes of the reply that are kept, from its destination MAC on; zero after the frame's end. A longer one is cut. */
constexpr uint32_t FPGA_REPLY_SIZE = 128;

/* Zeroes the reply, so that an old one is not taken for the next, and copies it: all zeros when none has come. Neither
 * fails. A reply that arrives meanwhile may be half in a copy, whole by 32-bit words. */
void clear_fpga_reply();
void copy_fpga_reply(uint8_t (&to)[FPGA_REPLY_SIZE]);

#endif
