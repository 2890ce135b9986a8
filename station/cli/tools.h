/* SPDX-License-Identifier: MIT
 *
 * The subcommands that are no single request: whole test plans, and what is made of their records.
 */
#ifndef STATION_TOOLS_H
#define STATION_TOOLS_H

#include "command_line.h"

namespace CLI
{
class App;
}

namespace station
{

struct tool {
    const char *name;
    const char *help;
    /* Adds its options and returns what runs it once they are read. */
    tool_run (*add)(CLI::App &sub);
};

/* All tools, in the order of the list. */
std::span<const tool> tools();

} // namespace station

#endif
