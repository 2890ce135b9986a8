/* SPDX-License-Identifier: MIT
 *
 * FPGA request frames. The FPGA answers each with a frame of the same type, which the receive hook keeps.
 */
#ifndef PACKET_FPGA_H
#define PACKET_FPGA_H

#include "facmsg.h"

constexpr uint32_t FPGA_MAX_READ = 100; /* what fits behind the header of the reply that is kept */

enum fpga_operation : uint32_t { FPGA_READ = 0, FPGA_WRITE = 1 };

constexpr uint8_t FPGA_DESTINATION[6] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0A};
constexpr uint8_t FPGA_SOURCE[6] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0B};

/* Whether an access is within bounds; an error line in the name of op names what is not, and what is allowed. */
bool fpga_access_valid(uint32_t fpga_port, uint32_t length, uint32_t max_length, const char *op);

/* A new request frame, *length bytes with room for the shortest Ethernet frame behind them, zero-filled; the caller
 * frees it. Null and length 0 when memory is short. */
uint8_t *factory_fill_fpga_packet_buffer(uint32_t phy_id, uint32_t *length, const uint8_t *data, uint32_t op_type,
                                         uint32_t address, uint32_t data_length);

#endif
