/* SPDX-License-Identifier: MIT
 *
 * Requests to the running service over its socket: whole ones, broken ones, and clients that die or fall silent.
 */
#include <atomic>
#include <chrono>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "service/server_lib.h"
#include "simulation.h"

using std::chrono::steady_clock;

static const std::string INCOMPLETE = frame(22, 0), UNKNOWN = frame(21, 0),
                         FACTORY_MODE = frame(10, 4, std::string(4, 0));

struct requests : testing::Test {
    requests()
    {
        start_service();
    }
    ~requests() override
    {
        EXPECT_EQ(ask_service(frame(19, 0)), UNKNOWN) << "the service is no longer there";
    }
    fake_driver driver;
};

TEST_F(requests, cut_short_or_too_large_are_answered_incomplete)
{
    for (size_t size = 0; size < 8; size++)
        EXPECT_EQ(request_client().send(frame(10, 0).substr(0, size)).end().reply(), INCOMPLETE) << size;
    for (const uint32_t sent : {0u, 1u, 1051u})
        EXPECT_EQ(request_client().send(frame(0, 1052, std::string(sent, 0))).end().reply(), INCOMPLETE) << sent;
    const auto start = steady_clock::now();
    for (const uint32_t size : {8089u, 8096u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        EXPECT_EQ(request_client().send(frame(10, size)).reply(), INCOMPLETE) << size;
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(3)) << "at once, that is";
    EXPECT_EQ(trace_text(), "");
    EXPECT_EQ(ask_service(frame(10, 8088, std::string(8088, 'x'))), FACTORY_MODE);
    request_client in_two_pieces;
    in_two_pieces.send(frame(10, 3));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(in_two_pieces.send("abc").reply(), FACTORY_MODE);
}

TEST_F(requests, run_where_no_signal_cuts_a_wait_short_and_no_child_inherits_a_socket)
{
    sigset_t blocked;
    int private_sockets = 0;
    driver.answer = [&](const driver_call &) { /* on the server thread */
                                               pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
                                               struct stat status;
                                               for (int fd = 0; fd < 256; fd++)
                                                   private_sockets += fstat(fd, &status) == 0 &&
                                                                      S_ISSOCK(status.st_mode) &&
                                                                      (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0;
                                               return 0;
    };
    EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
    EXPECT_EQ(sigismember(&blocked, SIGALRM), 1);
    EXPECT_EQ(sigismember(&blocked, SIGSEGV), 0);
    EXPECT_EQ(private_sockets, 2) << "the listening one and the client's";
    struct stat file;
    ASSERT_EQ(stat(FACMSG_SOCKET_PATH, &file), 0);
    EXPECT_EQ(file.st_mode, S_IFSOCK | 0600u);
}

/* Real time: the service gives a client 5 s for the header and 5 s for the payload. */
struct silent_client : requests, testing::WithParamInterface<std::string> {
};

TEST_P(silent_client, holds_the_service_for_five_seconds_only)
{
    const auto start = steady_clock::now();
    request_client silent;
    silent.send(GetParam());
    EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
    const auto waited = steady_clock::now() - start;
    EXPECT_EQ(silent.reply(), INCOMPLETE);
    EXPECT_GT(waited, std::chrono::milliseconds(4500));
    EXPECT_LT(waited, std::chrono::seconds(8));
}

INSTANTIATE_TEST_SUITE_P(at, silent_client, testing::Values("", frame(0, 1052)),
                         [](const auto &at) { return std::string(at.param.empty() ? "header" : "payload"); });

static int open_descriptors()
{
    int count = 0;
    DIR *const folder = opendir("/proc/self/fd");
    while (readdir(folder) != nullptr)
        count++;
    closedir(folder);
    return count;
}

static size_t heap_in_use()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0;
#else
    return mallinfo2().uordblks;
#endif
}

TEST_F(requests, leave_nothing_behind)
{
    const std::string request = frame(9, 8, std::string(8, 0));
    const auto ask_all_kinds = [&](size_t rounds) {
        for (size_t round = 0; round < rounds; round++) {
            ask_service(frame(10, 0));
            ask_service(frame(19, 0));
            request_client().send(request.substr(0, round % 17)); /* dies at any byte, or without its reply */
            ask_service(request);
            trace_clear();
        }
    };
    ask_all_kinds(17);
    const int descriptors = open_descriptors();
    const size_t heap = heap_in_use();
    ask_all_kinds(2500);
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_LE(heap_in_use(), heap + 4096);
}

TEST_F(requests, go_on_after_accept_fails)
{
    const log_capture log(1);
    simulation::fail_next("accept4");
    ask_service(frame(10, 0)); /* the service was waiting in accept already */
    EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
    EXPECT_EQ(log.text(), "factory_ssa_lib_server_thread_func: accept error, rv: -1\n");
    EXPECT_EQ(trace_count("wait"), 0);
}

TEST(service_socket, says_why_it_cannot_be_created)
{
    const temporary_folder folder;
    const int descriptors = open_descriptors();
    for (const std::string function : {"socket", "bind", "listen"}) {
        const log_capture log(1);
        simulation::fail_next(function);
        EXPECT_EQ(factory_ssa_lib_socket_create(), -1);
        const std::string what = function == "socket" ? "create" : function,
                          path = function == "socket" ? "" : "[" FACMSG_SOCKET_PATH "]";
        EXPECT_EQ(log.text(),
                  "factory_ssa_lib_socket_create: " + what + " socket" + path + " fail, errno=Too many open files\n");
    }
    EXPECT_EQ(open_descriptors(), descriptors);
}

/* What the thread sanitizer is to look at: the hook, registration and a request, all at once. */
TEST_F(requests, run_beside_receiving_and_registering_threads)
{
    std::atomic<bool> stop = false;
    const auto receive = [&](uint32_t phy_id) {
        uint8_t frame[64] = {0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0xF0, 0xF0};
        for (pack_info info = {0, 0, phy_id}; !stop; info.phy_id = phy_id + (info.phy_id + 1) % 64) {
            vexa_recv_packet(&info, frame, sizeof(frame));
            frame[12] ^= 0x0F; /* a test frame, then an FPGA frame */
            frame[13] ^= 0x09;
        }
    };
    const vexa_diag_drv table = fake_table();
    const auto keep_registering = [&] {
        while (!stop)
            vexa_ssa_regitser_interface(&table);
    };
    driver.answer = [](const driver_call &call) {
        const uint8_t frame[64] = {0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0xF0, 0xF0};
        const pack_info info = {0, 0, call.port};
        if (call.slot == "send_packet")
            vexa_recv_packet(&info, frame, sizeof(frame));
        call.write({call.port == 1 ? FACMSG_ABILITY_ANY_SPEED : 0, 1}); /* or phy id and link */
        return 0;
    };
    std::thread threads[] = {std::thread(receive, 0x10000), std::thread(receive, 0x10020),
                             std::thread(keep_registering)};
    packet_test_record record = {};
    record.any_speed = 1;
    const std::string reply = ask_service(frame(0, sizeof(record), bytes_of(record)));
    stop = true;
    for (auto &thread : threads)
        thread.join();
    record.port_count = 1;
    record.port_results[0] = FACMSG_PORT_RESULT(1, 0);
    EXPECT_EQ(reply, frame(0, sizeof(record), bytes_of(record)));
}
