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

/* packet_command.cpp */
extern const std::span<const option> packet_options;
outcome decode_packet(const request &sent, const std::vector<uint8_t> &reply);

/* service_commands.cpp */
extern const std::span<const option> level_options;
outcome decode_log_level(const request &sent, const std::vector<uint8_t> &reply);
outcome decode_poe_debug(const request &sent, const std::vector<uint8_t> &reply);
outcome decode_port_debug(const request &sent, const std::vector<uint8_t> &reply);
outcome decode_factory_mode(const request &sent, const std::vector<uint8_t> &reply);

/* raw_command.cpp */
extern const std::span<const option> raw_options;
outcome decode_raw(const request &sent, const std::vector<uint8_t> &reply);

} // namespace station

#endif
