/* SPDX-License-Identifier: MIT
 *
 * facmsg-simhost: hosts the factory-test service on a simulated switch until SIGINT or SIGTERM.
 */
#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "common/file.h"
#include "common/terminal.h"
#include "common/text.h"
#include "facmsg.h"
#include "host_time.h"
#include "options.h"
#include "service.h"
#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"

namespace fs = std::filesystem;
using namespace sim;

enum exit_status { EXIT_ENDED = 0, EXIT_USAGE = 2, EXIT_NOT_STARTED = 3 };

static std::string pace_text(double pace)
{
    return pace > 0 ? fmt::format("{} board seconds per second", pace) : "as fast as possible";
}

static void print_start(const board_config &config, const options &options)
{
    if (options.quiet)
        return;
    fmt::print("board: {}\n", common::escaped(fmt::format("{} ({})", config.name, config.description)));
    fmt::print("ports: {}, cables and plugs: {}\n", config.ports.size(), config.cables.size());
    fmt::print("wires: line rate / {}, at least {} Mbit/s\n", config.rate_divisor, config.min_wire_mbps);
    fmt::print("pace: {}\n", pace_text(options.pace));
    for (const auto &slot : options.dropped_slots)
        fmt::print("dropped slot: {}\n", slot);
}

/* The signals that end the program; blocked in every thread from here on, to be waited for. */
static sigset_t block_end_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

static std::unique_ptr<pcap_writer> open_capture(const std::string &path)
{
    try {
        return path.empty() ? nullptr : std::make_unique<pcap_writer>(path);
    } catch (const std::system_error &error) {
        throw usage_error(
            fmt::format("--pcap: found '{}' ({}), expected a file that can be written", path, error.code().message()));
    }
}

static void enter_directory(const std::string &path)
{
    try {
        fs::create_directories(fs::path(path) / "tmp");
        fs::current_path(path);
    } catch (const std::system_error &error) {
        throw usage_error(fmt::format("--directory: found '{}' ({}), expected a folder, or where one can be made", path,
                                      error.code().message()));
    }
}

/* The board outlives main(): the service's thread calls drivers and waits until the process is gone. */
static live_board &power_up(board_config config, const options &options)
{
    auto capture = open_capture(options.pcap);
    enter_directory(options.directory);
    print_start(config, options);
    auto &powered = *new board(std::move(config));
    powered.cpu.capture_to(std::move(capture));
    auto &live = *new live_board(powered, options.pace, vexa_recv_packet);
    drive(live, !options.quiet);
    use_board_time(live);
    return live;
}

static void start_service(const options &options)
{
    if (service_listens())
        throw std::runtime_error(fmt::format("{}: another host serves here already", fs::current_path().string()));
    const auto table = driver_table(options.dropped_slots);
    if (vexa_ssa_regitser_interface(&table) != 0)
        throw std::runtime_error("the library refused to start the service");
    if (!service_answers())
        throw std::runtime_error(fmt::format("{}: the service does not answer", FACMSG_SOCKET_PATH));
    std::atomic_ref(facmsg_dbg).store(options.log_level);
    fmt::print("ready: {}\n", (fs::current_path() / FACMSG_SOCKET_PATH).string());
    fflush(stdout);
}

static int run(const options &options)
{
    if (options.list_boards) {
        list_boards(options);
        return EXIT_ENDED;
    }
    auto config = load_board(find_board(options), options.boards_dir);
    const auto end_signals = block_end_signals();
    auto &live = power_up(std::move(config), options);
    start_service(options);
    if (options.run_flow) {
        run_flow_pressure();
    } else {
        int signal_number;
        sigwait(&end_signals, &signal_number);
    }
    if (!live.with_board([](board &b) { return b.cpu.close_capture(); }))
        common::say(fmt::format("facmsg-simhost: {}: not everything could be written", options.pcap));
    return EXIT_ENDED;
}

static int complain(const std::exception &error, exit_status status)
{
    common::say(fmt::format("facmsg-simhost: {}", error.what()));
    return status;
}

int main(int argc, char **argv)
{
    setvbuf(stdout, nullptr, _IOLBF, 0);
    try {
        return run(parse_options(argc, argv));
    } catch (const early_exit &done) {
        return done.status;
    } catch (const usage_error &error) {
        return complain(error, EXIT_USAGE);
    } catch (const common::file_error &error) {
        return complain(error, EXIT_USAGE);
    } catch (const std::exception &error) {
        return complain(error, EXIT_NOT_STARTED);
    }
}
