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
extern const std::span<const option> packet_options;
decoder decode_packet;

/* switch_commands.cpp */
extern const std::span<const option> switch_speed_options;
decoder decode_switch_speed, decode_switch_medium, decode_fc_report, decode_unsupported;

/* broadcast_command.cpp */
extern const std::span<const option> broadcast_options;
decoder decode_broadcast;

/* fpga_commands.cpp */
extern const std::span<const option> fpga_write_options, fpga_read_options;
outcome write_fpga(const request &task, const sender &send);
outcome read_fpga(const request &task, const sender &send);

/* poe_commands.cpp */
extern const std::span<const option> unit_options; /* for every request whose unit is all it takes */
extern const std::span<const option> poe_options, vop_options;
decoder decode_poe, decode_vop;

/* stress_commands.cpp */
extern const std::span<const option> stress_options, prbs_options;
decoder decode_flow, decode_serpentine, decode_prbs;

/* control_commands.cpp */
extern const std::span<const option> level_options, poe_upgrade_options;
decoder decode_level, decode_factory_mode, decode_poe_upgrade, decode_poe_version;

/* raw_command.cpp */
extern const std::span<const option> raw_options;
decoder decode_raw;

/* Pairs of digits, with blanks anywhere between or inside the pairs. Nothing when there is anything else. */
std::optional<std::vector<uint8_t>> parse_hex(const std::string &text);
/* Lines of an offset and 16 bytes. Lines equal to the one before are left out, with one "*" in their place. */
std::string hex_dump(const std::vector<uint8_t> &bytes);

} // namespace station

#endif
