/* SPDX-License-Identifier: MIT
 *
 * The options and decoders that the rows of the command table name, by family of requests.
 */
#ifndef STATION_FAMILIES_H
#define STATION_FAMILIES_H

#include "command.h"
#include "facmsg.h"

namespace station
{

using decoder = outcome(const request &sent, const std::vector<uint8_t> &reply);

/* packet_command.cpp */
extern const std::span<const option> PACKET_OPTIONS;
decoder decode_packet;

/* switch_commands.cpp */
extern const std::span<const option> SWITCH_SPEED_OPTIONS;
decoder decode_switch_speed, decode_switch_medium, decode_fc_report, decode_unsupported;

/* broadcast_command.cpp */
extern const std::span<const option> BROADCAST_OPTIONS;
decoder decode_broadcast;

/* fpga_commands.cpp */
extern const std::span<const option> FPGA_WRITE_OPTIONS, FPGA_READ_OPTIONS;
outcome write_fpga(const request &task, const sender &send);
outcome read_fpga(const request &task, const sender &send);

/* poe_commands.cpp */
extern const std::span<const option> UNIT_OPTIONS; /* for every request whose unit is all it takes */
extern const std::span<const option> POE_OPTIONS, VOP_OPTIONS;
decoder decode_poe, decode_vop;

/* stress_commands.cpp */
extern const std::span<const option> STRESS_OPTIONS, PRBS_OPTIONS;
decoder decode_flow, decode_serpentine, decode_prbs;

/* control_commands.cpp */
extern const std::span<const option> LEVEL_OPTIONS, POE_UPGRADE_OPTIONS;
decoder decode_level, decode_factory_mode, decode_poe_upgrade, decode_poe_version;

/* raw_command.cpp */
extern const std::span<const option> RAW_OPTIONS;
decoder decode_raw;

/* Pairs of digits, with blanks anywhere between or inside the pairs. Nothing when there is anything else. */
std::optional<std::vector<uint8_t>> parse_hex(const std::string &text);
/* Lines of an offset and 16 bytes. Lines equal to the one before are left out, with one "*" in their place. */
std::string hex_dump(const std::vector<uint8_t> &bytes);

} // namespace station

#endif
