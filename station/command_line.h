/* SPDX-License-Identifier: MIT
 *
 * The command line: made from the command table, read into one request.
 */
#ifndef STATION_COMMAND_LINE_H
#define STATION_COMMAND_LINE_H

#include "command.h"

namespace station
{

struct settings {
    std::string directory = ".";
    bool json = false;
    bool no_progress = false;
};

struct invocation {
    settings chosen;
    const command *row; /* null: help was asked for */
    request sent;
    std::string help; /* the help text when it was asked for */
};

/* Throws usage_error. */
invocation read_command_line(int argc, char **argv);

} // namespace station

#endif
