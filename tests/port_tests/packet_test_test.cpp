/* SPDX-License-Identifier: MIT
 *
 * The packet test requests: which ports they pick, what they refuse, and the shape of their reply.
 */
#include <gtest/gtest.h>
#include <vector>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "trace.h"

constexpr uint32_t UNWRITTEN = 0xEEEEEEEE;

struct packet_test : testing::Test {
    /* Asks with every word that the service is to write filled with UNWRITTEN, and checks those that it is not to. */
    packet_test_record ask(uint32_t any_speed, uint32_t speed, uint32_t duplex, uint32_t medium, uint32_t type = 0)
    {
        packet_test_record sent;
        memset(&sent, 0xEE, sizeof(sent));
        sent.unit = 6;
        sent.any_speed = any_speed;
        sent.speed = speed;
        sent.duplex = duplex;
        sent.medium = medium;
        trace_clear();
        const auto record = answered(type, sent);
        EXPECT_EQ(memcmp(&record.unit, &sent.unit, 5 * sizeof(uint32_t)), 0) << "an input word was changed";
        for (size_t i = picked(record).size(); i < FACMSG_MAX_PORTS; i++)
            EXPECT_EQ(record.port_results[i], UNWRITTEN) << i;
        return record;
    }
    static std::vector<uint32_t> picked(const packet_test_record &record)
    {
        std::vector<uint32_t> ports;
        for (uint32_t i = 0; record.port_count != UNWRITTEN && i < record.port_count; i++)
            ports.push_back(FACMSG_RESULT_PORT(record.port_results[i]));
        return ports;
    }
    fake_driver driver;
};

TEST_F(packet_test, picks_ports_by_ability)
{
    constexpr uint32_t BOX = 1u << 25, ANY = 1u << 29, ZERO = 1u << 30;
    driver.add_port(1, {1u << 4, BOX | 1u << 5});      /* speed 3: copper duplex 1, fiber duplex 2 */
    driver.add_port(2, {3u << 4, 0});                  /* both on copper, but not for duplex 0 */
    driver.add_port(9, {BOX | ZERO | 3u << 4, ANY});   /* all duplex codes on copper */
    driver.add_port(200, {ANY | ZERO | 1u << 4, BOX}); /* half of what duplex 0 needs */
    driver.add_port(255, {1u | 2u << 30, BOX | 3u});   /* speed 1, and the last bit of speed 16 */
    driver.add_port(256, {BOX, ZERO | 3u << 4});
    using list = std::vector<uint32_t>;
    const struct {
        uint32_t any_speed, speed, duplex, medium;
        list ports, box_ports;
    } cases[] = {
        {0, 3, 1, 0, {1, 2, 9, 200}, {9}},
        {0, 3, 2, 0, {2, 9}, {9}},
        {0, 3, 0, 0, {9}, {9}},
        {0, 3, 1, 1, {256}, {}},
        {0, 3, 2, 1, {1, 256}, {1}},
        {0, 3, 0, 1, {256}, {}},
        {1, 3, 1, 0, {9, 200}, {9, 200}},
        {5, 0, 3, 1, {9, 200}, {9, 200}},
        {0, 1, 1, 0, {255}, {}},
        {0, 1, 2, 1, {255}, {255}},
        {0, 16, 2, 0, {255}, {}},
        {0, 16, 1, 0, {9, 200}, {9}},
        {0, 0, 1, 0, {}, {}},
        {0, 17, 1, 0, {}, {}},
        {0, 19, 0, 0, {}, {}},
        {0, 0x80000003, 1, 0, {}, {}},
        {0, 8, 1, 0, {}, {}},
        {0, 0xFFFFFFFF, 2, 0, {}, {}},
    };
    for (const auto &c : cases)
        for (const uint32_t type : {0u, 20u}) {
            SCOPED_TRACE(testing::PrintToString(std::vector{type, c.any_speed, c.speed, c.duplex, c.medium}));
            const auto record = ask(c.any_speed, c.speed, c.duplex, c.medium, type);
            const list &expected = type == 20 ? c.box_ports : c.ports;
            EXPECT_EQ(picked(record), expected);
            EXPECT_EQ(record.result, expected.empty() ? 8u : 0u);
            EXPECT_EQ(trace_count("get_ability(6,"), 256);
        }
}

TEST_F(packet_test, refuses_what_it_cannot_do)
{
    driver.add_port(1, {1u << 4, 0});
    const auto refused = [&](uint32_t duplex, uint32_t medium, const std::string &line, const std::string &calls) {
        const log_capture log(1);
        const auto record = ask(0, 3, duplex, medium);
        EXPECT_EQ(record.result, 8u);
        EXPECT_EQ(record.port_count, UNWRITTEN);
        EXPECT_EQ(trace_text(), calls);
        EXPECT_EQ(log.text(), "facmsg_packet_test_fun: " + line);
    };
    const auto no_support = [](const char *medium) {
        char line[200];
        const auto at = [](auto function) { return reinterpret_cast<void *>(function); };
        const auto &table = facmsg_vexa_diag_drv;
        snprintf(line, sizeof(line),
                 "Port test no support(get_ability:0x%p, get_status:0x%p, set_status:0x%p, medium:%s).\n",
                 at(table.get_ability), at(table.get_status), at(table.set_status), medium);
        return std::string(line);
    };
    refused(3, 0, "Invalid duplex 3.\n", "get_ability(6,1)\n");
    refused(1, 2, no_support("2"), "");
    refused(1, 0xFFFFFFFF, no_support("-1"), "");
    const auto without = [&](auto... members) {
        const auto one = [&](auto member) {
            facmsg_vexa_diag_drv.*member = nullptr;
            refused(1, 0, no_support("0"), "");
            facmsg_vexa_diag_drv = fake_table();
        };
        (one(members), ...);
    };
    using drv = vexa_diag_drv;
    without(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::get_port_phyid, &drv::set_cpu_mac_addr,
            &drv::clear_cpu_mac_addr);
}

TEST_F(packet_test, forgets_the_abilities_of_a_port_that_cannot_be_asked)
{
    for (uint32_t port = 1; port <= 256; port++)
        driver.add_port(port, {1u << 4, 0});
    driver.failures = {{"set_cpu_mac_addr"}};
    const auto all = ask(0, 3, 1, 0);
    EXPECT_EQ(picked(all).size(), 256u);
    EXPECT_EQ(all.port_results[255], 256u << 16 | 7);
    for (auto &[number, port] : driver.ports)
        port.ability = {number == 2, 0};
    driver.ports[2].ability.copper = 1u << 4;
    driver.failures = {{"get_ability", 2, 0, 5}};
    const log_capture log(2);
    EXPECT_EQ(ask(0, 3, 1, 0).result, 8u);
    EXPECT_EQ(log.text(), "facmsg_packet_test_fun: Get port2 ability fail(ret = 5).\n"
                          "facmsg_packet_test_fun: No support port speed for testing.\n"
                          "facmsg_send: Msg type:0, payload_size:1052.\n");
}

/* The whole road: socket, dispatcher, test, frames through the hook, reply. */
TEST_F(packet_test, judges_each_port_over_the_socket)
{
    start_service();
    for (uint32_t port = 1; port <= 5; port++)
        driver.add_port(port, {1u << 4, 0});
    driver.ports[2].down_polls = NEVER;
    driver.ports[3].copies = [](int nth) { return nth % 500 == 0 ? 0 : 1; };
    driver.ports[5].delay_waits = 30;
    packet_test_record record = {0, 6, 0, 3, 1, 0, 0, {}};
    const std::string request = frame(0, sizeof(record), bytes_of(record));
    record.result = 1;
    record.port_count = 5;
    for (const uint32_t i : {0u, 1u, 2u, 3u, 4u})
        record.port_results[i] = FACMSG_PORT_RESULT(i + 1, i == 1 ? 1 : i == 2 ? 3 : 0);
    EXPECT_EQ(ask_service(request), frame(0, sizeof(record), bytes_of(record)));
    driver.add_port(2, {1u << 4, 0}).copies = driver.ports[3].copies = nullptr;
    driver.ports[2].down_polls = 0;
    record.result = 0;
    for (const uint32_t i : {1u, 2u})
        record.port_results[i] = (i + 1) << 16;
    EXPECT_EQ(ask_service(request), frame(0, sizeof(record), bytes_of(record)));
}
