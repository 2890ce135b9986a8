/* SPDX-License-Identifier: MIT
 *
 * What to say to a command line that cannot be read.
 */
#ifndef STATION_MISUSE_H
#define STATION_MISUSE_H

#include "station/requests/command.h"

namespace CLI
{
class App;
}

namespace station
{

/* The subcommand that was given; all null while there is none. */
struct chosen_subcommand {
    const CLI::App *sub = nullptr;
    const char *name = nullptr;
    const command *row = nullptr; /* null for a tool */
};

/* The first argument that nothing took: a subcommand's name, an option's, or one argument too many. */
std::string explain_extra(const std::string &found, const CLI::App &app, const chosen_subcommand &given);

/* What the parser says of an option, with the values that it takes. */
std::string explain_error(const std::string &what, const chosen_subcommand &given);

/* That a subcommand is missing, or one of its own. */
std::string explain_nothing(const CLI::App &app);

} // namespace station

#endif
