/* SPDX-License-Identifier: MIT
 *
 * Reads a board file. docs/simulator.md is its reference.
 */
#ifndef SIM_BOARD_FILE_H
#define SIM_BOARD_FILE_H

#include <string>
#include <string_view>
#include <vector>

#include "sim/model/board_config.h"

namespace sim
{

/* The names of the boards in a folder, in order; none when there is no such folder. */
std::vector<std::string> boards_in(const std::string &folder);

/* The board that a file describes, with the boards that it is based on: files beside it, or names of boards in a
 * folder. Throws common::file_error (toml_reader.h) when the file cannot be read or anything in it is wrong. */
board_config load_board(const std::string &path, const std::string &boards_dir = "");

/* The same for text; path stands in messages. */
board_config parse_board(std::string_view text, const std::string &path, const std::string &boards_dir = "");

} // namespace sim

#endif
