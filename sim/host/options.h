/* SPDX-License-Identifier: MIT
 *
 * The command line of facmsg-simhost, and the boards that it knows by name.
 */
#ifndef SIM_OPTIONS_H
#define SIM_OPTIONS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace sim
{

struct options {
    std::string board = "healthy-28";
    std::string boards_dir;
    std::string directory = ".";
    std::string pcap;
    std::vector<std::string> dropped_slots;
    double pace = 0; /* board seconds per second; 0 is as fast as possible */
    int log_level = 0;
    bool list_boards = false;
    bool run_flow = false;
    bool quiet = false;
};

/* Thrown for a bad option; what() is one line. */
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* Thrown when the program is done after the command line, as after --help; status is the exit status. */
struct early_exit {
    int status;
};

options parse_options(int argc, const char *const *argv);

/* The path of the board file that --board means: a file, or a board's name. Throws usage_error. */
std::string find_board(const options &options);

/* Prints name and description of every board in the boards folder, or what is wrong with it. Throws
 * usage_error when there is no board. */
void list_boards(const options &options);

} // namespace sim

#endif
