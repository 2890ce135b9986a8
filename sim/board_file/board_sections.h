/* SPDX-License-Identifier: MIT
 *
 * The sections of a board file that have files of their own. Each adds one table to the board read so far and throws
 * common::file_error when it does not fit.
 */
#ifndef SIM_BOARD_SECTIONS_H
#define SIM_BOARD_SECTIONS_H

#include "common/toml_reader.h"
#include "facmsg_protocol.h"
#include "sim/model/board_config.h"

namespace sim
{

constexpr common::number_range PHY_ID_OFFSETS = {0, UINT32_MAX - FACMSG_MAX_PORTS};
constexpr uint32_t DEFAULT_PHY_ID_OFFSET = 0x100;

/* Adds a port with a number and a phy id that no other has. */
void add_port(const common::toml_reader &reader, const port_config &port, board_config &board);

/* One [[ports]] table: ports that are alike. */
void read_ports(const std::string &file, const toml::table &table, board_config &board);

/* The [poe] table, and one [[loads]] table: alike devices that PoE ports power. A later load takes the place of an
 * earlier one. */
void read_poe(const std::string &file, const toml::table &table, board_config &board);
void read_load(const std::string &file, const toml::table &table, board_config &board);

/* One [[faults]] table. */
void read_fault(const std::string &file, const toml::table &table, board_config &board);

} // namespace sim

#endif
