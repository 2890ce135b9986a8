/* SPDX-License-Identifier: MIT
 *
 * The command line: made from the command table, read into one request.
 */
#ifndef STATION_COMMAND_LINE_H
#define STATION_COMMAND_LINE_H

#include "station/requests/command.h"

namespace station
{

struct settings {
    std::string directory = ".";
    bool json = false;
    bool no_progress = false;
    std::string command_line = {}; /* all of it, for the record */
};

using tool_run = std::function<exit_code(const settings &chosen)>;

struct invocation {
    settings chosen;
    const command *row; /* of a request; null for a tool */
    request sent;
    tool_run run;          /* of a tool */
    const char *tool_name; /* null for none */
    std::string help;      /* the help text or the version, when it was asked for */
};

/* Throws usage_error. */
invocation read_command_line(int argc, char **argv);

} // namespace station

#endif
