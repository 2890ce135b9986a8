/* SPDX-License-Identifier: MIT
 *
 * A request's round trip against a bare echo over the same kind of socket, and the burst sender.
 */
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <facmsg.h>
#include <filesystem>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "common/socket_address.h"

namespace
{

constexpr char ECHO_PATH[] = "tmp/echo";

struct message {
    facmsg_header header;
    debug_level_record record;
};
static_assert(sizeof(message) == 16);

/* Reads 16 bytes and writes them back, one connection after the other. */
void serve_echo(int listener)
{
    for (;;) {
        const int fd = accept(listener, nullptr, nullptr);
        uint8_t bytes[sizeof(message)];
        if (read(fd, bytes, sizeof(bytes)) == sizeof(bytes) && write(fd, bytes, sizeof(bytes)) != sizeof(bytes))
            abort();
        close(fd);
    }
}

void start_echo()
{
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = common::socket_address(ECHO_PATH);
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 || listen(listener, 32) != 0)
        abort();
    std::thread(serve_echo, listener).detach();
}

/* Connect, write 16, read 16, close. */
void round_trip(benchmark::State &state, const char *path)
{
    const sockaddr_un address = common::socket_address(path);
    for (auto _ : state) {
        message exchanged = {{FACMSG_MSG_DEBUG, sizeof(debug_level_record)}, {-1, 0}};
        const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
        if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
            write(fd, &exchanged, sizeof(exchanged)) != sizeof(exchanged) ||
            read(fd, &exchanged, sizeof(exchanged)) != sizeof(exchanged))
            state.SkipWithError("no answer");
        close(fd);
    }
}

int discard_frame(const pack_info *, const uint8_t *frame, uint32_t)
{
    benchmark::DoNotOptimize(frame);
    return 0;
}

void start_service()
{
    char folder[] = "/tmp/facmsg-bench-XXXXXX";
    if (mkdtemp(folder) == nullptr || chdir(folder) != 0)
        abort();
    std::filesystem::create_directory("tmp");
    start_echo();
    if (vexa_tx_packet_init(discard_frame) != 0)
        abort();
    debug_level_record record = {-1, 0}; /* negative: silent, and no marker file to make */
    while (facmsg_client_send(FACMSG_MSG_DEBUG, sizeof(record), &record, 1) != 0)
        usleep(1000);
}

} // namespace

BENCHMARK_CAPTURE(round_trip, echo_baseline, ECHO_PATH)->UseRealTime();
BENCHMARK_CAPTURE(round_trip, request, FACMSG_SOCKET_PATH)->UseRealTime();

int main(int argc, char **argv)
{
    start_service();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(std::filesystem::current_path());
}
