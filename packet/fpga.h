/* SPDX-License-Identifier: MIT
 *
 * What the FPGA requests need besides the access itself, which is in facmsg.h.
 */
#ifndef PACKET_FPGA_H
#define PACKET_FPGA_H

#include "facmsg.h"

/* The two addresses of FPGA frames. */
constexpr uint8_t FPGA_DESTINATION[6] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0A};
constexpr uint8_t FPGA_SOURCE[6] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0B};

/* Whether an access is within bounds; an error line in the name of op names what is not, and what is allowed. */
bool fpga_access_valid(uint32_t fpga_port, uint32_t length, uint32_t max_length, const char *op);

#endif
