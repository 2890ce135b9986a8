/* SPDX-License-Identifier: MIT
 *
 * The command line of facmsg-simhost, and the boards that it knows by name.
 */
#include "options.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "board_file.h"
#include "driver_table.h"
#include "names.h"

namespace fs = std::filesystem;

namespace sim
{

static constexpr double SLOWEST = 0.01;
static constexpr double FASTEST = 1000;

static double parse_pace(const std::string &text)
{
    double pace = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), pace);
    const bool number = end.ec == std::errc() && end.ptr == text.data() + text.size();
    if (text == "max")
        return 0;
    if (!number || !(pace >= SLOWEST && pace <= FASTEST))
        throw usage_error(
            fmt::format("--pace: found {}, expected max or a number from {} to {}", text, SLOWEST, FASTEST));
    return pace;
}

static void check_slots(const std::vector<std::string> &dropped)
{
    const auto &known = slot_names();
    for (const auto &name : dropped) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            throw usage_error(fmt::format("--drop-slot: found {}{}", name, expected_one_of(name, known)));
    }
}

/* Installed boards, or those of the source tree, unless the user says otherwise. */
static std::string default_boards_dir()
{
    const char *named = getenv("FACMSG_BOARDS");
    if (named && *named)
        return named;
    return fs::is_directory(FACMSG_SOURCE_BOARDS) ? FACMSG_SOURCE_BOARDS : FACMSG_INSTALLED_BOARDS;
}

options parse_options(int argc, const char *const *argv)
{
    options parsed;
    parsed.boards_dir = default_boards_dir();
    std::string pace = "max";
    CLI::App app("Simulated switch that hosts the factory-test service.", "facmsg-simhost");
    app.add_option("--board", parsed.board, "Board: a name from --list-boards, or a file")->capture_default_str();
    app.add_option("--boards-dir", parsed.boards_dir, "Folder of the boards by name (default: $FACMSG_BOARDS)");
    app.add_option("--directory", parsed.directory, "Working directory; the socket is in its tmp/");
    app.add_option("--pace", pace, "Board seconds per second, or max")->capture_default_str();
    app.add_option("--pcap", parsed.pcap, "Write every CPU frame to this capture file");
    app.add_option("--drop-slot", parsed.dropped_slots, "Leave a driver slot empty; repeatable")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--log-level", parsed.log_level, "Log level of the library: 0 silent, 1 errors, 2 traces");
    app.add_flag("--list-boards", parsed.list_boards, "List the boards by name and exit");
    app.add_flag("--run-flow", parsed.run_flow, "Run the flow pressure test, print its reply and exit");
    app.add_flag("--quiet", parsed.quiet, "Print the ready line only");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &help) {
        throw early_exit{app.exit(help)};
    } catch (const CLI::ParseError &error) {
        throw usage_error(fmt::format("{}; see --help", error.what()));
    }
    parsed.pace = parse_pace(pace);
    check_slots(parsed.dropped_slots);
    return parsed;
}

static std::vector<std::string> board_names(const std::string &folder)
{
    std::vector<std::string> names;
    std::error_code no_folder;
    for (const auto &entry : fs::directory_iterator(folder, no_folder)) {
        if (entry.path().extension() == ".toml")
            names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string find_board(const options &options)
{
    if (options.board.ends_with(".toml") || options.board.find('/') != std::string::npos)
        return options.board;
    const auto names = board_names(options.boards_dir);
    const std::vector<std::string_view> known(names.begin(), names.end());
    if (std::find(names.begin(), names.end(), options.board) == names.end())
        throw usage_error(fmt::format("--board: found {}{} of {}, or a .toml file", options.board,
                                      expected_one_of(options.board, known), options.boards_dir));
    return (fs::path(options.boards_dir) / (options.board + ".toml")).string();
}

void list_boards(const options &options)
{
    for (const auto &name : board_names(options.boards_dir)) {
        const auto board = load_board((fs::path(options.boards_dir) / (name + ".toml")).string());
        fmt::print("{:<18} {}\n", name, board.description);
    }
}

} // namespace sim
