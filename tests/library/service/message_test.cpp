/* SPDX-License-Identifier: MIT
 *
 * Frames as they are sent, and the client side of the exchange against servers that behave badly.
 */
#include <gtest/gtest.h>

#include "service/server_lib.h"
#include "service_client.h"

TEST(message, that_cannot_be_sent_is_refused)
{
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    const std::string payload(4 << 20, 'x'), need = "<facmsg_send> Send msg fail,need bytes: ";
    const log_capture log(2);
    EXPECT_EQ(facmsg_send(ends[0], 0x80000009, 0, nullptr), 0);
    EXPECT_EQ(facmsg_send(ends[0], 9, 1, nullptr), -1);
    EXPECT_EQ(log.text(), "<facmsg_send> Msg type:-2147483639, payload_size:0.\n<facmsg_send> Msg format error.\n");
    facmsg_dbg = 1;
    EXPECT_EQ(facmsg_send(ends[0], 9, 4 << 20, payload.data()), -1);
    const std::string in_part = log.text();
    EXPECT_NE(in_part.find(need + "4194312,but :"), std::string::npos);
    EXPECT_EQ(in_part.find("-1.\n"), std::string::npos);
    close(ends[1]);
    EXPECT_EQ(facmsg_send(ends[0], 9, 4, "abcd"), -1); /* and no signal comes */
    EXPECT_EQ(log.text(), in_part + need + "12,but :-1.\n");
    close(ends[0]);
}

TEST(message, without_memory_fails_whatever_its_size)
{
    const temporary_folder folder;
    const int listener = factory_ssa_lib_socket_create(); /* for the client to connect to */
    for (const uint32_t size : {1u, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
        char payload[1];
        const log_capture log(1);
        world::fail("allocation");
        EXPECT_EQ(facmsg_send(-1, 9, size, payload), -1);
        EXPECT_TRUE(sizeof(size_t) == 4 || world::failed_allocation == uint64_t{size} + 8) << size;
        world::fail("allocation");
        EXPECT_EQ(facmsg_client_send(9, size, payload, 1), -1);
        EXPECT_EQ(log.text(), "<facmsg_send> Allocate memory fail.\n<facmsg_client_send> Allocate memory fail.\n");
    }
    close(listener);
}

TEST(message, of_a_client_takes_a_reply_of_its_size)
{
    const std::string op = "<facmsg_client_send> ", timeout = op + "Recv packet timeout.\n";
    const struct {
        const char *name;
        std::string answer;
        int attempts, result;
        std::string log;
        int polls;
    } cases[] = {
        {"same size", frame(9, 4, "WXYZ"), 1, 0, "", 1},
        {"same size, another type and payload size", frame(77, 99, "WXYZ"), 3, 0, "", 1},
        {"larger: its first part", frame(9, 8, "WXYZabcd"), 1, 0, "", 1},
        {"smaller", frame(21, 0), 5, -1, op + "Server recv fail.\n" + timeout, 1},
        {"none", "", 3, -1, timeout, 3},
        {"not waited for", frame(9, 4, "WXYZ"), 0, -1, timeout, 0},
    };
    const temporary_folder folder;
    for (const auto &c : cases) {
        char payload[] = "abcd", request[12] = {};
        int polls = 0;
        const int listener = factory_ssa_lib_socket_create(); /* over the file of the case before */
        const auto answer = [&](const std::string &event) {
            EXPECT_EQ(event, "wait 100000us");
            if (polls++ > 0)
                return;
            const int client = accept(listener, nullptr, nullptr);
            EXPECT_EQ(read(client, request, sizeof(request)), 12);
            send(client, c.answer.data(), c.answer.size(), MSG_NOSIGNAL);
            close(client);
        };
        world::on_event = answer; /* the server answers once, and hangs up */
        const log_capture log(2);
        EXPECT_EQ(facmsg_client_send(7, 4, payload, c.attempts), c.result) << c.name;
        EXPECT_EQ(log.text(), op + "Msg type:7, payload_size:4.\n" + c.log) << c.name;
        close(listener);
        EXPECT_TRUE(c.polls == 0 || std::string(request, sizeof(request)) == frame(7, 4, "abcd"));
        EXPECT_STREQ(payload, c.result == 0 ? "WXYZ" : "abcd") << c.name;
        EXPECT_EQ(polls, c.polls) << c.name;
    }
}

TEST(message, of_a_client_without_a_service_fails)
{
    const temporary_folder folder;
    const log_capture log(1);
    EXPECT_EQ(facmsg_client_send(19, 4, nullptr, 1), -1);
    const int listener = factory_ssa_lib_socket_create();
    world::fail("socket");
    EXPECT_EQ(facmsg_client_send(19, 0, nullptr, 1), -1);
    close(listener);
    close(STDIN_FILENO); /* so that the client's descriptor is 0 */
    EXPECT_EQ(facmsg_client_send(19, 0, nullptr, 1), -1);
    EXPECT_EQ(close(STDIN_FILENO), -1) << "the client should have closed it";
    const std::string op = "<facmsg_client_send> ", no_service = op + "Connect service fail()ret:-1).\n";
    EXPECT_EQ(log.text(), op + "Msg format error.\n" + no_service + no_service);
}
