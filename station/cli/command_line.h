/* SPDX-License-Identifier: MIT
 *
 * The command line: made from the command table, read into one request.
 */
#ifndef STATION_COMMAND_LINE_H
#define STATION_COMMAND_LINE_H

#include "station/requests/command.h"

namespace CLI
{
class App;
class ParseError;
} // namespace CLI

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

/* A subcommand that is no single request. */
struct tool {
    const char *name;
    const char *help;
    /* Adds its options and returns what runs it once they are read. */
    tool_run (*add)(CLI::App &sub);
};

/* All tools, in the order of the list. */
std::span<const tool> tools();

/* Throws usage_error. */
invocation read_command_line(int argc, char **argv);

/* The subcommand that was given; all null while there is none. */
struct subcommand_choice {
    const CLI::App *sub = nullptr;
    const char *name = nullptr;
    const command *row = nullptr; /* null for a tool */
};

/* What to say to a command line that cannot be read, all in misuse.cpp. The first argument that nothing took: a
 * subcommand's name, an option's, or one argument too many. */
std::string explain_extra(const std::string &word, const CLI::App &app, const subcommand_choice &subcommand);

/* What the parser says of an option, with the values that it takes. */
std::string explain_error(const CLI::ParseError &error, const CLI::App &app, const subcommand_choice &subcommand);

/* That a subcommand is missing, or one of its own. */
std::string explain_nothing(const CLI::App &app);

} // namespace station

#endif
