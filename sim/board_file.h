/* SPDX-License-Identifier: MIT
 *
 * Reads a board file. docs/simulator.md is its reference.
 */
#ifndef SIM_BOARD_FILE_H
#define SIM_BOARD_FILE_H

#include <string>
#include <string_view>

#include "board_config.h"

namespace sim
{

/* The board that a file describes, with the boards that it is based on. Throws text::file_error (toml_reader.h) when
 * the file cannot be read or anything in it is wrong. */
board_config load_board(const std::string &path);

/* The same for text; path stands in messages, and a base is looked for beside it. */
board_config parse_board(std::string_view text, const std::string &path);

} // namespace sim

#endif
