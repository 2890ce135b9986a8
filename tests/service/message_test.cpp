/* SPDX-License-Identifier: MIT
 *
 * Frames as they are sent, and the client side of the exchange against servers that behave badly.
 */
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "log_capture.h"
#include "request_client.h"
#include "service/server_lib.h"
#include "simulation.h"
#include "trace.h"

struct socket_pair {
    int ends[2];
    socket_pair()
    {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    }
    ~socket_pair()
    {
        close(ends[0]);
        close(ends[1]);
    }
};

TEST(message, is_header_then_payload)
{
    const socket_pair pair;
    const log_capture log(2);
    EXPECT_EQ(facmsg_send(pair.ends[0], 0x80000009, 5, "abcde"), 0);
    EXPECT_EQ(facmsg_send(pair.ends[0], 21, 0, nullptr), 0);
    char bytes[64];
    ASSERT_EQ(read(pair.ends[1], bytes, sizeof(bytes)), 21);
    EXPECT_EQ(std::string(bytes, 21), frame(0x80000009, 5, "abcde") + frame(21, 0));
    EXPECT_EQ(log.text(), "facmsg_send: Msg type:-2147483639, payload_size:5.\n"
                          "facmsg_send: Msg type:21, payload_size:0.\n");
}

TEST(message, is_silent_below_its_level)
{
    const socket_pair pair;
    for (const int level : {-1, 0, 1}) {
        const log_capture log(level);
        facmsg_send(pair.ends[0], 9, 1, "a");
        facmsg_send(pair.ends[0], 9, 1, nullptr);
        EXPECT_EQ(log.text(), level == 1 ? "facmsg_send: Msg format error.\n" : "");
    }
}

TEST(message, to_a_peer_that_has_gone_fails_without_a_signal)
{
    socket_pair pair;
    shutdown(pair.ends[1], SHUT_RDWR);
    const log_capture log(1);
    EXPECT_EQ(facmsg_send(pair.ends[0], 9, 4, "abcd"), -1);
    EXPECT_EQ(log.text(), "facmsg_send: Send msg fail,need bytes: 12,but :-1.\n");
}

TEST(message, written_in_part_fails)
{
    const socket_pair pair;
    fcntl(pair.ends[0], F_SETFL, O_NONBLOCK);
    const std::string payload(4 << 20, 'x');
    const log_capture log(1);
    EXPECT_EQ(facmsg_send(pair.ends[0], 9, 4 << 20, payload.data()), -1);
    const std::string start = "facmsg_send: Send msg fail,need bytes: 4194312,but :";
    EXPECT_EQ(log.text().substr(0, start.size()), start);
    EXPECT_NE(log.text().substr(start.size()), "-1.\n");
}

TEST(message, without_memory_fails_whatever_its_size)
{
    const side_folder folder;
    const int listener = factory_ssa_lib_socket_create(); /* for the client to connect to */
    for (const uint32_t size : {1u, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
        char payload[1];
        const log_capture log(1);
        simulation::fail_allocation(1);
        EXPECT_EQ(facmsg_send(-1, 9, size, payload), -1);
        if (sizeof(size_t) > 4) {
            EXPECT_EQ(simulation::failed_allocation_size(), uint64_t{size} + 8);
        }
        simulation::fail_allocation(1);
        EXPECT_EQ(facmsg_client_send(9, size, payload, 1), -1);
        simulation::fail_allocation(0);
        EXPECT_EQ(log.text(), "facmsg_send: Allocate memory fail.\nfacmsg_client_send: Allocate memory fail.\n");
    }
    close(listener);
}

/* A server that reads one request of 12 bytes, answers with these bytes, and hangs up. */
struct scripted_server {
    explicit scripted_server(const std::string &answer)
        : listener(factory_ssa_lib_socket_create()), thread([this, answer] {
              const int client = accept(listener, nullptr, nullptr);
              char bytes[12];
              request.assign(bytes, static_cast<size_t>(read(client, bytes, sizeof(bytes))));
              send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
              close(client);
          })
    {
    }
    ~scripted_server()
    {
        thread.join();
        close(listener);
    }
    int listener;
    std::string request;
    std::thread thread;
};

constexpr char TIMEOUT[] = "facmsg_client_send: Recv packet timeout.\n";
constexpr char POLL[] = "wait_us(100000)";

TEST(client, takes_a_reply_of_the_request_s_size)
{
    const struct {
        const char *name;
        std::string answer;
        int attempts;
        int result;
        const char *payload;
        std::string log;
        int polls;
    } cases[] = {
        {"same size", frame(9, 4, "WXYZ"), 1, 0, "WXYZ", "", 1},
        {"same size, another type and payload size", frame(77, 99, "WXYZ"), 3, 0, "WXYZ", "", 1},
        {"larger: its first part", frame(9, 8, "WXYZabcd"), 1, 0, "WXYZ", "", 1},
        {"smaller", frame(21, 0), 5, -1, "abcd", std::string("facmsg_client_send: Server recv fail.\n") + TIMEOUT, 1},
        {"none", "", 3, -1, "abcd", TIMEOUT, 3},
        {"not waited for", frame(9, 4, "WXYZ"), 0, -1, "abcd", TIMEOUT, 0},
        {"not waited for, negative", frame(9, 4, "WXYZ"), -1, -1, "abcd", TIMEOUT, 0},
    };
    const side_folder folder;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        trace_clear();
        char payload[] = "abcd";
        {
            scripted_server server(c.answer);
            const log_capture log(1);
            EXPECT_EQ(facmsg_client_send(7, 4, payload, c.attempts), c.result);
            EXPECT_EQ(log.text(), c.log);
            server.thread.join();
            server.thread = std::thread([] {});
            EXPECT_EQ(server.request, frame(7, 4, "abcd"));
        }
        EXPECT_STREQ(payload, c.payload);
        EXPECT_EQ(trace_count(POLL), c.polls);
        EXPECT_EQ(trace_count(""), c.polls);
    }
}

TEST(client, needs_a_service_in_its_own_folder)
{
    start_service();
    trace_clear();
    EXPECT_EQ(facmsg_client_send(19, 0, nullptr, 1), 0); /* an empty reply is as long as an empty request */

    trace_clear();
    const log_capture log(1);
    EXPECT_EQ(facmsg_client_send(19, 4, nullptr, 1), -1);
    simulation::fail_next("socket", EMFILE);
    EXPECT_EQ(facmsg_client_send(19, 0, nullptr, 1), -1);
    ASSERT_EQ(chdir("tmp"), 0);
    EXPECT_EQ(facmsg_client_send(19, 0, nullptr, 1), -1);
    ASSERT_EQ(chdir(".."), 0);
    EXPECT_EQ(log.text(), "facmsg_client_send: Msg format error.\n"
                          "facmsg_client_send: Connect service fail()ret:-1).\n"
                          "facmsg_client_send: Connect service fail()ret:-1).\n");
    EXPECT_EQ(trace_text(), "");
}

TEST(client, traces_the_request_it_sends)
{
    const side_folder folder;
    scripted_server server(frame(9, 4, "WXYZ"));
    char payload[] = "abcd";
    const log_capture log(2);
    EXPECT_EQ(facmsg_client_send(7, 4, payload, 1), 0);
    EXPECT_EQ(log.text(), "facmsg_client_send: Msg type:7, payload_size:4.\n");
}
