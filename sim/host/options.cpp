/* SPDX-License-Identifier: MIT */
#include "options.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "common/file.h"
#include "common/program.h"
#include "common/text.h"
#include "common/words.h"
#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"

namespace fs = std::filesystem;

namespace sim
{

static constexpr double SLOWEST = 0.01;
static constexpr double FASTEST = 1000;

/* The values of options as they were given. */
struct option_texts {
    std::string pace = "max";
    std::string level = "0";
    std::string slot; /* the last one */
};

/* An option with a text for its value, and what may be given. */
struct text_option {
    std::string name;
    std::string &value;
    std::string help;
    std::string expected;
};

struct flag_option {
    std::string name;
    bool &value;
    std::string help;
};

static std::vector<text_option> text_options(options &parsed, option_texts &texts)
{
    return {
        {"--board", parsed.board, "Board: a name from --list-boards, or a file", "a board's name or a .toml file"},
        {"--boards-dir", parsed.boards_dir, "Folder of the boards by name (default: $FACMSG_BOARDS)",
         "a folder with boards"},
        {"--directory", parsed.directory, "Working directory; the socket is in its tmp/", "a folder"},
        {"--pcap", parsed.pcap, "Write every CPU frame to this capture file", "a file that can be written"},
        {"--drop-slot", texts.slot, "Leave a driver slot empty; repeatable", "the name of a driver slot"},
        {"--pace", texts.pace, "Board seconds per second, or max",
         fmt::format("max or a number from {} to {}", SLOWEST, FASTEST)},
        {"--log-level", texts.level, "Log level of the library: 0 silent, 1 errors, 2 traces",
         "a number: 0 silent, 1 errors, 2 traces"},
    };
}

static std::vector<flag_option> flag_options(options &parsed)
{
    return {
        {"--list-boards", parsed.list_boards, "List the boards by name and exit"},
        {"--run-flow", parsed.run_flow, "Run the flow pressure test, print its reply and exit"},
        {"--quiet", parsed.quiet, "Print the ready line only"},
    };
}

[[noreturn]] static void refuse(const text_option &option, const std::string &found)
{
    throw usage_error(fmt::format("{}: found {}, expected {}", option.name, found, option.expected));
}

static const text_option &named(const std::vector<text_option> &options, std::string_view name)
{
    return *std::ranges::find(options, name, &text_option::name);
}

/* The whole text as a number; nothing when it is none. */
template <class Number> static std::optional<Number> parse_number(const std::string &text)
{
    Number number{};
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    return end.ec == std::errc() && end.ptr == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

static double pace_of(const text_option &option)
{
    const auto pace = parse_number<double>(option.value);
    if (option.value == "max")
        return 0;
    if (!pace || !(*pace >= SLOWEST && *pace <= FASTEST))
        refuse(option, "'" + option.value + "'");
    return *pace;
}

static int level_of(const text_option &option)
{
    const auto level = parse_number<int>(option.value);
    if (!level)
        refuse(option, "'" + option.value + "'");
    return *level;
}

static void check_slots(const std::vector<std::string> &dropped)
{
    const auto &known = slot_names();
    for (const auto &name : dropped) {
        if (std::ranges::find(known, name) == known.end())
            throw usage_error(fmt::format("--drop-slot: found '{}'{}", name, common::expected_one_of(name, known)));
    }
}

/* The boards that lie beside the program, wherever it was installed or built, unless the user says otherwise. */
static std::string default_boards_dir()
{
    const char *named = getenv("FACMSG_BOARDS");
    if (named != nullptr && *named != 0)
        return named;
    std::error_code unreadable;
    const fs::path program = fs::read_symlink("/proc/self/exe", unreadable);
    return (program.parent_path() / FACMSG_BOARDS_FROM_PROGRAM).lexically_normal();
}

/* The parser says which option is wrong, but not what it takes. */
[[noreturn]] static void explain(const std::string &what, const CLI::App &app, const std::vector<text_option> &options)
{
    const auto name = what.substr(0, what.find_first_of(": "));
    if (what.ends_with("flag override"))
        throw usage_error(fmt::format("--{}: found a value, expected none", name));
    for (const auto &option : options) {
        if (option.name == name)
            refuse(option, app.count(name) > 1 ? "more than one value" : "nothing");
    }
    throw usage_error(what);
}

static void refuse_unknown(const std::string &found, const std::vector<text_option> &options)
{
    std::vector<std::string_view> known = {"--help", "--version", "--list-boards", "--run-flow", "--quiet"};
    for (const auto &option : options)
        known.push_back(option.name);
    if (!found.starts_with("-"))
        throw usage_error(fmt::format("found '{}', expected options only; see --help", found));
    throw usage_error(fmt::format("unknown option '{}'{}", found, common::expected_one_of(found, known)));
}

static void parse(CLI::App &app, int argc, const char *const *argv, const std::vector<text_option> &options)
{
    app.allow_extras();
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &done) { /* help or the version was asked for */
        throw early_exit{app.exit(done)};
    } catch (const CLI::ParseError &error) {
        explain(error.what(), app, options);
    }
    if (const auto extras = app.remaining(); !extras.empty())
        refuse_unknown(extras.front(), options);
    for (const auto &option : options) {
        if (app.count(option.name) > 0 && option.value.empty())
            refuse(option, "nothing");
    }
}

options parse_options(int argc, const char *const *argv)
{
    options parsed;
    option_texts texts;
    parsed.boards_dir = default_boards_dir();
    const auto options = text_options(parsed, texts);
    CLI::App app("Simulated switch that hosts the factory-test service.", "facmsg-simhost");
    for (const auto &option : options)
        app.add_option(option.name, option.value, option.help)->capture_default_str();
    app.get_option("--drop-slot")
        ->each([&](const std::string &name) { parsed.dropped_slots.push_back(name); })
        ->take_last();
    app.set_version_flag("--version", fmt::format("facmsg-simhost {}", common::version()), "Show the version and exit");
    for (const auto &flag : flag_options(parsed))
        app.add_flag(flag.name, flag.value, flag.help)->disable_flag_override();
    parse(app, argc, argv, options);
    if (parsed.list_boards && parsed.run_flow)
        throw usage_error("--list-boards: found beside --run-flow, expected one of the two");
    parsed.pace = pace_of(named(options, "--pace"));
    parsed.log_level = level_of(named(options, "--log-level"));
    check_slots(parsed.dropped_slots);
    return parsed;
}

static std::vector<std::string> board_names(const std::string &folder)
{
    auto names = boards_in(folder);
    if (names.empty())
        throw usage_error(fmt::format("--boards-dir: found '{}', expected a folder with boards", folder));
    return names;
}

std::string find_board(const options &options)
{
    if (options.board.ends_with(".toml") || options.board.find('/') != std::string::npos)
        return options.board;
    const auto names = board_names(options.boards_dir);
    const std::vector<std::string_view> known(names.begin(), names.end());
    if (std::find(names.begin(), names.end(), options.board) == names.end())
        throw usage_error(fmt::format("--board: found '{}', which is no .toml file and not in {}{}", options.board,
                                      options.boards_dir, common::expected_one_of(options.board, known)));
    return (fs::path(options.boards_dir) / (options.board + ".toml")).string();
}

/* What is wrong with the board when it has none. */
static std::string description_of(const fs::path &board, const std::string &boards_dir)
{
    try {
        return load_board(board.string(), boards_dir).description;
    } catch (const common::file_error &error) {
        return error.what();
    }
}

void list_boards(const options &options)
{
    for (const auto &name : board_names(options.boards_dir)) {
        const auto file = fs::path(options.boards_dir) / (name + ".toml");
        fmt::print("{:<18} {}\n", name, common::escaped(description_of(file, options.boards_dir)));
    }
}

} // namespace sim
