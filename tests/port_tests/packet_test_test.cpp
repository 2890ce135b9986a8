/* SPDX-License-Identifier: MIT
 *
 * The packet test request: which ports it picks, what it refuses, and the shape of its reply.
 */
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "trace.h"

constexpr uint32_t UNWRITTEN = 0xEEEEEEEE;

struct packet_test : testing::Test {
    /* Asks with every word that the service is to write filled with UNWRITTEN, and checks those that it is not to. */
    packet_test_record ask(uint32_t any_speed, uint32_t speed, uint32_t duplex, uint32_t medium, bool by_socket = false)
    {
        packet_test_record record;
        memset(&record, 0xEE, sizeof(record));
        record.unit = 6;
        record.any_speed = any_speed;
        record.speed = speed;
        record.duplex = duplex;
        record.medium = medium;
        const auto sent = record;
        trace_clear();
        const std::string reply =
            by_socket ? ask_service(frame(0, sizeof(record), bytes_of(record))) : ask_dispatcher(0, bytes_of(record));
        EXPECT_EQ(reply.substr(0, 8), frame(0, 1052));
        EXPECT_EQ(reply.size(), 1060u);
        memcpy(&record, reply.data() + 8, std::min(sizeof(record), reply.size() - 8));
        EXPECT_EQ(memcmp(&record.unit, &sent.unit, 5 * sizeof(uint32_t)), 0) << "an input word was changed";
        const uint32_t written = record.port_count == UNWRITTEN ? 0 : record.port_count;
        for (uint32_t i = written; i < FACMSG_MAX_PORTS; i++)
            EXPECT_EQ(record.port_results[i], UNWRITTEN) << i;
        return record;
    }
    std::vector<uint32_t> picked(const packet_test_record &record)
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
    constexpr uint32_t ANY = 1u << 29, ZERO = 1u << 30;
    driver.add_port(1, {1u << 4, 1u << 5});          /* speed 3: copper duplex 1, fiber duplex 2 */
    driver.add_port(2, {3u << 4, 0});                /* both on copper, but not for duplex 0 */
    driver.add_port(9, {ZERO | 3u << 4, ANY});       /* all duplex codes on copper */
    driver.add_port(200, {ANY | ZERO | 1u << 4, 0}); /* half of what duplex 0 needs */
    driver.add_port(255, {1u | 2u << 30, 3u});       /* speed 1, and the last bit of speed 16 */
    driver.add_port(256, {0, ZERO | 3u << 4});
    const struct {
        uint32_t any_speed, speed, duplex, medium;
        std::vector<uint32_t> ports;
    } cases[] = {
        {0, 3, 1, 0, {1, 2, 9, 200}},
        {0, 3, 2, 0, {2, 9}},
        {0, 3, 0, 0, {9}},
        {0, 3, 1, 1, {256}},
        {0, 3, 2, 1, {1, 256}},
        {0, 3, 0, 1, {256}},
        {1, 3, 1, 0, {9, 200}},
        {5, 0, 3, 1, {9, 200}},
        {0, 1, 1, 0, {255}},
        {0, 1, 2, 1, {255}},
        {0, 16, 2, 0, {255}},
        {0, 16, 1, 0, {9, 200}},
        {0, 0, 1, 0, {}},
        {0, 17, 1, 0, {}},
        {0, 19, 0, 0, {}},
        {0, 0x80000003, 1, 0, {}},
        {0, 8, 1, 0, {}},
        {0, 0xFFFFFFFF, 2, 0, {}},
    };
    for (const auto &c : cases) {
        const auto record = ask(c.any_speed, c.speed, c.duplex, c.medium);
        EXPECT_EQ(picked(record), c.ports) << c.any_speed << " " << c.speed << " " << c.duplex << " " << c.medium;
        EXPECT_EQ(record.result, c.ports.empty() ? 8u : 0u);
        EXPECT_EQ(trace_count("get_ability(6,"), 256);
    }
}

TEST_F(packet_test, scans_all_ports_in_order)
{
    std::string scan;
    for (int port = 1; port <= 256; port++)
        scan += "get_ability(6," + std::to_string(port) + ")\n";
    ask(0, 3, 1, 0);
    EXPECT_EQ(trace_text(), scan);
    for (uint32_t port = 1; port <= 256; port++)
        driver.add_port(port, {1u << 29, 0}).copies = [](int) { return 0; };
    driver.failures = {{"set_cpu_mac_addr"}};
    const auto record = ask(1, 0, 0, 0);
    EXPECT_EQ(picked(record).size(), 256u);
    EXPECT_EQ(record.port_results[255], 256u << 16 | 7);
}

TEST_F(packet_test, refuses_what_it_cannot_do)
{
    driver.add_port(1, {1u << 4, 0});
    using drv = vexa_diag_drv;
    const auto refused = [&](uint32_t duplex, uint32_t medium) {
        const log_capture log(1);
        const auto record = ask(0, 3, duplex, medium);
        EXPECT_EQ(record.result, 8u);
        EXPECT_EQ(record.port_count, UNWRITTEN);
        return log.text();
    };
    EXPECT_EQ(refused(3, 0), "facmsg_packet_test_fun: Invalid duplex 3.\n");
    EXPECT_EQ(trace_text(), "get_ability(6,1)\n");
    const auto pointer = [](auto function) {
        char text[40];
        snprintf(text, sizeof(text), "0x%p", reinterpret_cast<void *>(function));
        return std::string(text);
    };
    const auto no_support = [&](const std::string &medium) {
        const auto &table = facmsg_vexa_diag_drv;
        const auto ability = table.get_ability;
        const auto get = table.get_status;
        const auto set = table.set_status;
        return "facmsg_packet_test_fun: Port test no support(get_ability:" + pointer(ability) +
               ", get_status:" + pointer(get) + ", set_status:" + pointer(set) + ", medium:" + medium + ").\n";
    };
    for (const uint32_t medium : {2u, 0xFFFFFFFFu}) {
        EXPECT_EQ(refused(1, medium), no_support(medium == 2 ? "2" : "-1"));
        EXPECT_EQ(trace_text(), "");
    }
    const auto without = [&](auto member) {
        facmsg_vexa_diag_drv.*member = nullptr;
        EXPECT_EQ(refused(1, 0), no_support("0"));
        EXPECT_EQ(trace_text(), "");
        facmsg_vexa_diag_drv = fake_table();
    };
    without(&drv::get_ability);
    without(&drv::get_status);
    without(&drv::set_status);
    without(&drv::get_port_phyid);
    without(&drv::set_cpu_mac_addr);
    without(&drv::clear_cpu_mac_addr);
}

TEST_F(packet_test, forgets_the_abilities_of_a_port_that_cannot_be_asked)
{
    driver.add_port(2, {1u << 4, 0});
    EXPECT_EQ(ask(0, 3, 1, 0).result, 0u);
    driver.failures = {{"get_ability", 2, 0, 5}};
    for (uint32_t port = 1; port <= 256; port++)
        driver.ports.try_emplace(port);
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
    for (uint32_t port = 1; port <= 6; port++)
        driver.add_port(port, {1u << 4, 0});
    driver.ports[2].down_polls = NEVER;
    driver.ports[3].copies = [](int nth) { return nth % 500 == 0 ? 0 : 1; };
    driver.ports[5].copies = [](int) { return 0; };
    driver.ports[6].delay_waits = 30;
    auto record = ask(0, 3, 1, 0, true);
    EXPECT_EQ(record.result, 1u);
    const std::vector<uint32_t> codes = {0, 1, 3, 0, 3, 0};
    ASSERT_EQ(record.port_count, codes.size());
    for (uint32_t i = 0; i < codes.size(); i++)
        EXPECT_EQ(record.port_results[i], FACMSG_PORT_RESULT(i + 1, codes[i]));
    for (auto &[number, port] : driver.ports)
        port = {.ability = port.ability, .phy_id = port.phy_id};
    record = ask(0, 3, 1, 0, true);
    EXPECT_EQ(record.result, 0u);
    EXPECT_EQ(record.port_results[5], 6u << 16);
}
