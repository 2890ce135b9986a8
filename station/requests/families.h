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
outcome write_fpga(const request &asked, const sender &send);
outcome read_fpga(const request &asked, const sender &send);

/* poe_commands.cpp */
extern const std::span<const option> unit_options; /* for every request whose unit is all it takes */
extern const std::span<const option> poe_options;
decoder decode_poe;

/* vop_command.cpp */
extern const std::span<const option> vop_options;
decoder decode_vop;

/* poe_controller_commands.cpp */
extern const std::span<const option> poe_upgrade_options;
decoder decode_poe_upgrade, decode_poe_version;

/* stress_commands.cpp */
extern const std::span<const option> stress_options;
decoder decode_flow, decode_serpentine;

/* prbs_command.cpp */
extern const std::span<const option> prbs_options;
decoder decode_prbs;

/* service_commands.cpp */
extern const std::span<const option> level_options;
decoder decode_level, decode_factory_mode;

/* raw_command.cpp */
extern const std::span<const option> raw_options;
decoder decode_raw;

} // namespace station

#endif
