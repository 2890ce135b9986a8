/* SPDX-License-Identifier: MIT
 *
 * The service over its socket: its start by registration, whole requests, broken ones, and clients that die or fall
 * silent. Each case needs a process of its own, which ctest gives it.
 */
#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>

#include "service/server_lib.h"
#include "service_client.h"

using std::chrono::steady_clock;

static const std::string INCOMPLETE = frame(22, 0), UNKNOWN = frame(21, 0),
                         FACTORY_MODE = frame(10, 4, std::string(4, 0));
static const vexa_diag_drv EMPTY = {};

static void other() {}

/* Of the driver's records only this one is no row of words in the stories. */
static_assert(offsetof(pack_info, phy_id) == 4 && sizeof(vexa_diag_drv) == 217 * sizeof(void *));

struct registration : testing::Test {
    registration()
    {
        world::on_event = [this](const std::string &event) {
            waits += event == "wait 1s";
            std::this_thread::yield(); /* waits take no time */
        };
    }
    /* Registers a table, and checks the result and what the library's own table holds then. */
    static void add(const vexa_diag_drv *added, int result, const vexa_diag_drv &expected)
    {
        EXPECT_EQ(vexa_ssa_regitser_interface(added), result);
        EXPECT_EQ(memcmp(&facmsg_vexa_diag_drv, &expected, sizeof(expected)), 0);
    }
    std::atomic<int> waits = 0;
    temporary_folder folder;
    vexa_diag_drv table = world::driver_table();
    std::string op = "<vexa_ssa_regitser_interface> ";
};

TEST_F(registration, of_an_empty_table_starts_the_service_of_none_does_not)
{
    EXPECT_EQ(facmsg_dbg, 0);
    const log_capture log(1);
    add(nullptr, -1, EMPTY);
    EXPECT_EQ(log.text(), op + "Invalid vexa diag drv.\n");
    EXPECT_EQ(send_to_service(""), -1);
    add(&EMPTY, 0, EMPTY);
    ASSERT_TRUE(wait_for_service());
    EXPECT_EQ(ask_service(frame(10, 0)), frame(10, 4, std::string(4, '\xff')));
    EXPECT_EQ(facmsg_client_send(19, 0, nullptr, 1), 0); /* an empty reply is as long as an empty request */
    alignas(void *) char bytes[sizeof(table) + 1];       /* a table may lie at any address, an odd one here */
    memcpy(bytes + 1, &table, sizeof(table));
    add(reinterpret_cast<const vexa_diag_drv *>(bytes + 1), 0, table);
    EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
}

TEST_F(registration, keeps_the_first_function_of_each_slot)
{
    std::string mounted;
    for (const int slot : {175, 0, 3, 175, 216})
        mounted += op + "this interface has been mounted, offset:" + std::to_string(slot) + "\\x0d\n";
    const log_capture log(1);
    vexa_diag_drv expected = {};
    expected.send_packet = table.send_packet;
    EXPECT_EQ(vexa_tx_packet_init(expected.send_packet), 0);
    EXPECT_EQ(memcmp(&facmsg_vexa_diag_drv, &expected, sizeof(expected)), 0);

    vexa_diag_drv ends = {};
    ends.reserved_0[0] = ends.reserved_0[3] = expected.reserved_0[0] = expected.reserved_0[3] = other;
    ends.get_ex_speed_support = expected.get_ex_speed_support = [](ex_speed_support *) { return 0; };
    ends.send_packet = [](const pack_info *, const uint8_t *, uint32_t) { return -1; };
    add(&ends, 0, expected);
    add(&ends, 0, expected);
    EXPECT_EQ(log.text(), mounted);
    EXPECT_TRUE(wait_for_service());
}

TEST_F(registration, can_be_repeated_when_the_service_could_not_start)
{
    const std::string refused = op + "Factory server init fail.\n";
    facmsg_vexa_diag_drv.reserved_0[5] = other; /* a failed start clears the table as well */
    const log_capture log(1);
    world::fail("pthread_create");
    add(&table, -1, EMPTY);
    world::fail("allocation");
    add(&table, -1, EMPTY);
    EXPECT_EQ(world::live_allocations, 0);
    EXPECT_EQ(log.text(), "<facmsg_server_init> Create factory ssa lib server fail.\n" + refused +
                              "<facmsg_server_init> allocate memory for factory server fail.\n" + refused);
    add(&table, 0, table);
    EXPECT_TRUE(wait_for_service());
}

TEST_F(registration, waits_for_the_socket_s_folder)
{
    ASSERT_EQ(rmdir("tmp"), 0);
    const log_capture log(1);
    add(&table, 0, table);
    while (waits < 3)
        std::this_thread::yield();
    ASSERT_EQ(mkdir("tmp", 0700), 0);
    ASSERT_TRUE(wait_for_service());
    const std::string attempt = "<factory_ssa_lib_socket_create> bind socket[tmp/.factory_ssa_socket] fail, "
                                "errno=No such file or directory\n"
                                "<factory_ssa_lib_server_thread_func> continue to create server socket.\\x0d\n";
    EXPECT_EQ(log.text().substr(0, 2 * attempt.size()), attempt + attempt);
}

struct requests : registration {
    requests()
    {
        EXPECT_TRUE(vexa_ssa_regitser_interface(&table) == 0 && wait_for_service());
    }
    ~requests() override
    {
        EXPECT_EQ(ask_service(frame(19, 0)), UNKNOWN) << "the service is no longer there";
    }
};

TEST_F(requests, cut_short_or_too_large_are_answered_incomplete)
{
    world::on_call = [](const driver_call &) -> int { abort(); };
    const auto cut = [](const std::string &request, size_t size) {
        const int fd = send_to_service(request.substr(0, size));
        shutdown(fd, SHUT_WR);
        return reply_of(fd);
    };
    for (const uint32_t size : {0u, 1u, 7u, 8u, 9u, 1059u})
        EXPECT_EQ(cut(frame(0, 1052, std::string(1052, 0)), size), INCOMPLETE) << size;
    const auto start = steady_clock::now();
    for (const uint32_t size : {8089u, 8096u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        EXPECT_EQ(ask_service(frame(10, size)), INCOMPLETE) << size;
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(3)) << "at once, that is";
    world::on_call = [](const driver_call &) { return 0; };
    EXPECT_EQ(ask_service(frame(10, 8088, std::string(8088, 'x'))), FACTORY_MODE);
    const int in_two_pieces = send_to_service(frame(10, 3));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(write(in_two_pieces, "abc", 3), 3);
    EXPECT_EQ(reply_of(in_two_pieces), FACTORY_MODE);
}

TEST_F(requests, run_where_no_signal_cuts_a_wait_short_and_no_child_inherits_a_socket)
{
    sigset_t blocked;
    struct stat file;
    int private_sockets = 0;
    const auto look = [&](const driver_call &) {
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        for (int fd = 0; fd < 256; fd++)
            private_sockets +=
                fstat(fd, &file) == 0 && S_ISSOCK(file.st_mode) && (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0;
        return 0;
    };
    world::on_call = look; /* on the server thread */
    EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
    EXPECT_EQ(sigismember(&blocked, SIGALRM), 1);
    EXPECT_EQ(sigismember(&blocked, SIGSEGV), 0);
    EXPECT_EQ(private_sockets, 2) << "the listening one and the client's";
    ASSERT_EQ(stat(FACMSG_SOCKET_PATH, &file), 0);
    EXPECT_EQ(file.st_mode, S_IFSOCK | 0600u);
}

/* Real time: the service gives a client 5 s for the header and 5 s for the payload. */
TEST_F(requests, that_stop_hold_the_service_for_five_seconds_only)
{
    for (const auto &sent : {std::string(), frame(0, 1052)}) {
        const auto start = steady_clock::now();
        const int silent = send_to_service(sent);
        EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
        const auto waited = steady_clock::now() - start;
        EXPECT_EQ(reply_of(silent), INCOMPLETE);
        EXPECT_GT(waited, std::chrono::milliseconds(4500));
        EXPECT_LT(waited, std::chrono::seconds(8));
    }
}

static long open_descriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(requests, leave_nothing_behind)
{
    const std::string request = frame(9, 8, std::string(8, 0));
    const auto ask_all_kinds = [&](size_t rounds) {
        for (size_t round = 0; round < rounds; round++) {
            ask_service(frame(10, 0));
            ask_service(frame(19, 0));
            close(send_to_service(request.substr(0, round % 17))); /* dies at any byte, or without its reply */
            ask_service(request);
        }
    };
    ask_all_kinds(17);
    const auto descriptors = open_descriptors();
    const int allocations = world::live_allocations;
    ask_all_kinds(200);
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(world::live_allocations, allocations);
}

TEST_F(requests, go_on_after_accept_fails)
{
    const log_capture log(1);
    world::fail("accept4");
    ask_service(frame(10, 0)); /* the service was waiting in accept already */
    EXPECT_EQ(ask_service(frame(10, 0)), FACTORY_MODE);
    EXPECT_EQ(log.text(), "<factory_ssa_lib_server_thread_func> accept error, rv: -1\n");
    EXPECT_EQ(waits, 0);
}

TEST_F(registration, says_why_its_socket_cannot_be_created)
{
    const auto descriptors = open_descriptors();
    for (const char *function : {"socket", "bind", "listen"}) {
        const log_capture log(1);
        world::fail(function);
        EXPECT_EQ(factory_ssa_lib_socket_create(), -1);
        const std::string what =
            *function == 's' ? "create socket" : function + std::string(" socket[tmp/.factory_ssa_socket]");
        EXPECT_EQ(log.text(), "<factory_ssa_lib_socket_create> " + what + " fail, errno=Too many open files\n");
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
    world::on_call = [](const driver_call &call) {
        const auto &frame = call.arguments[4];
        const pack_info info = {0, 0, call.port};
        if (strcmp(call.slot, "send_packet") == 0)
            vexa_recv_packet(&info, static_cast<const uint8_t *>(frame.bytes), static_cast<uint32_t>(frame.count));
        call.write(std::array<uint64_t, 2>{call.port == 1 ? FACMSG_ABILITY_ANY_SPEED : 0, 1}); /* or phy id and link */
        return 0;
    };
    std::thread threads[] = {std::thread(receive, 0x10000), std::thread(receive, 0x10020), std::thread([&] {
                                 while (!stop)
                                     vexa_ssa_regitser_interface(&table);
                             })};
    uint32_t words[263] = {0, 0, 1}; /* any speed */
    const auto payload = [&] { return std::string(reinterpret_cast<const char *>(words), sizeof(words)); };
    const std::string reply = ask_service(frame(0, 1052, payload()));
    stop = true;
    for (auto &thread : threads)
        thread.join();
    words[6] = 1;
    words[7] = FACMSG_PORT_RESULT(1, 0);
    EXPECT_EQ(reply, frame(0, 1052, payload()));
}
