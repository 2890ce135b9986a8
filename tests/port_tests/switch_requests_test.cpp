/* SPDX-License-Identifier: MIT
 *
 * The speed and medium switch requests, and the broadcast test.
 */
#include <gtest/gtest.h>
#include <vector>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "simulation.h"
#include "trace.h"

using words = std::vector<uint32_t>;

constexpr uint32_t UNWRITTEN = 0xEEEEEEEE;

struct port_requests : testing::Test {
    ~port_requests() override
    {
        simulation::fail_allocation(0);
    }
    /* The scan of the ports is left out of the trace. */
    template <class Record> Record ask(uint32_t type, uint32_t setting = UNWRITTEN)
    {
        Record record;
        memset(&record, 0xEE, sizeof(record));
        record.unit = 6;
        if constexpr (requires { record.setting; })
            record.setting = setting;
        trace_clear();
        record = answered(type, record);
        calls = trace_text();
        const size_t scanned = calls.find("get_ability(6,256)\n");
        calls.erase(0, scanned == std::string::npos ? 0 : scanned + strlen("get_ability(6,256)\n"));
        return record;
    }
    template <class Record> words results(const Record &record)
    {
        return {record.port_results, record.port_results + 3};
    }
    fake_driver driver;
    std::string calls;
};

using switch_requests = port_requests;

TEST_F(switch_requests, set_the_speed_of_every_1g_10g_port)
{
    constexpr uint32_t BOTH = 1u << 5 | 1u << 7;
    driver.add_port(5, {0, BOTH});
    driver.add_port(6, {BOTH, 1u << 5});
    driver.add_port(256, {0, ~0u});
    const std::string read_5 = "get_status(6,5)\n", set_5 = "set_status(6,5,160,0,0,2,165)\n",
                      read_256 = "get_status(6,256)\n", set_256 = "set_status(6,256,160,0,0,2,165)\n";
    const struct {
        fake_failure failure;
        uint32_t result;
        words results;
        std::string calls;
    } cases[] = {
        {{}, 0, {5 << 16, 256 << 16, UNWRITTEN}, read_5 + set_5 + read_256 + set_256},
        {{"set_status", 5}, 1, {5 << 16 | 6, 256 << 16, UNWRITTEN}, read_5 + set_5 + read_256 + set_256},
        {{"get_status", 256}, 1, {5 << 16, 256 << 16 | 6, UNWRITTEN}, read_5 + set_5 + read_256},
    };
    for (const auto &c : cases) {
        driver.failures = {c.failure};
        const auto record = ask<switch_test_record>(1, 0);
        EXPECT_EQ(record.result, c.result);
        EXPECT_EQ(record.port_count, 2u);
        EXPECT_EQ(results(record), c.results);
        EXPECT_EQ(calls, c.calls);
    }
}

TEST_F(switch_requests, report_the_fc_ethernet_ports)
{
    const struct {
        uint32_t last_fiber, flag;
    } cases[] = {{1u << 13, 0}, {1u << 15, 0}, {1u << 17, 0}, {1u << 12 | 1u << 14 | 1u << 16, 1}, {0, 1}};
    driver.add_port(3, {1u << 28, 0});
    for (const auto &c : cases) {
        driver.add_port(2, {0, 1u << 28 | (c.flag ? 1u << 13 : 0)}); /* the last port decides, not this */
        driver.add_port(9, {0, 1u << 28 | c.last_fiber});
        const auto record = ask<switch_test_record>(3);
        EXPECT_EQ(record.setting, c.flag) << c.last_fiber;
        EXPECT_EQ(record.result, UNWRITTEN);
        EXPECT_EQ(results(record), (words{2 << 16, 9 << 16, UNWRITTEN}));
        EXPECT_EQ(calls, "");
    }
}

TEST_F(switch_requests, turn_the_medium_there_and_back)
{
    driver.add_port(4, {1u << 27, 0});
    driver.add_port(5, {1u << 27, 1u << 27});
    driver.add_port(7, {1u << 27, 1u << 27}).status.medium = 5;
    for (const uint32_t medium : {1u, 0u}) {
        const auto record = ask<switch_test_record>(4);
        EXPECT_EQ(record.result, 0u);
        EXPECT_EQ(results(record), (words{5 << 16, 7 << 16, UNWRITTEN}));
        EXPECT_EQ(record.setting, driver.ports[7].status.medium);
        EXPECT_EQ(driver.ports[5].status.medium, medium);
        EXPECT_EQ(driver.ports[7].status.medium, 1 - medium);
        EXPECT_TRUE(
            calls.ends_with("set_status(6,7,160,1," + std::to_string(1 - medium) + ",2,165)\nwait_us(5000000)\n"));
    }
    driver.failures = {{"get_status", 7}, {"set_status", 5}};
    const log_capture log(2);
    const auto record = ask<switch_test_record>(4);
    EXPECT_EQ(record.result, 1u);
    EXPECT_EQ(record.setting, 1u);
    EXPECT_EQ(results(record), (words{5 << 16 | 4, 7 << 16 | 4, UNWRITTEN}));
    EXPECT_EQ(log.text_of("platform_port_medium_switch"), "Get port5 medium 0.\n");
}

TEST_F(switch_requests, are_refused_without_ports_or_driver)
{
    const struct {
        uint32_t type;
        std::string op;
        int ability_lines;
    } cases[] = {{1, "facmsg_1g_10g_switch_fun", 0},
                 {3, "facmsg_fc_ether_switch_fun", 256},
                 {4, "facmsg_copper_fiber_switch_fun", 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.op);
        const log_capture log(2);
        auto record = ask<switch_test_record>(c.type);
        EXPECT_EQ(record.result, 2u);
        EXPECT_EQ(record.port_count, UNWRITTEN);
        std::string lines = log.text_of(c.op);
        EXPECT_TRUE(lines.ends_with(
            "fail(ret = -2).\n" + std::string(c.ability_lines ? "Get port 256 ability copper:0x0 fiber:0x0 .\n" : "") +
            "No support port speed for testing.\n"));
        EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 257 + c.ability_lines);
        facmsg_vexa_diag_drv.set_status = nullptr;
        EXPECT_EQ(ask<switch_test_record>(c.type).result, 2u);
        EXPECT_EQ(calls, "");
        EXPECT_TRUE(log.text_of(c.op).ends_with("set_status:(nil)).\n"));
        facmsg_vexa_diag_drv = fake_table();
    }
    const log_capture log(1);
    EXPECT_EQ(ask_dispatcher(2, std::string(1040, 0)), "");
    EXPECT_EQ(log.text(), "facmsg_10g_40g_switch_fun: Do not support.\n");
}

using broadcast = port_requests;

TEST_F(broadcast, answers_with_a_result_for_every_fault)
{
    for (const uint32_t port : {2u, 3u, 4u})
        driver.add_port(port, {port == 2, port != 2});
    driver.ports[2].status.link = 7; /* up, but not to send from */
    driver.answers["get_port_fcs"] = [](uint32_t port, int) { return 0x100000000 + port; };
    const std::string read_links = "get_status(6,2)\nget_status(6,3)\nget_status(6,4)\n",
                      burst = "port_broadcast_begin(6)\nget_port_phyid(3,1,1,0,50)\nsend_packet(0,1,259,128) x50\n"
                              "wait_us(50000)\nwait_us(10000000)\n",
                      end = "port_broadcast_end(6)\n", settle = "wait_us(3000000)\n",
                      without_4 = read_links + burst + "get_port_fcs(6,2)\nget_port_fcs(6,3)\n" + end + settle,
                      all_calls = read_links + burst + "get_port_fcs(6,2)\nget_port_fcs(6,3)\nget_port_fcs(6,4)\n" +
                                  end + settle;
    const std::string fail = "Port broadcast test fail.\n", fcs_2 = "Port2 FCS number 4294967298.\n",
                      fcs_3 = "Port3 FCS number 4294967299.\n", fcs_4 = "Port4 FCS number 4294967300.\n";
    const struct {
        const char *fault;
        fake_failure failure;
        uint32_t result;
        words results;
        std::string calls, log;
    } cases[] = {
        {"none", {}, 0, {2 << 16, 3 << 16, 4 << 16}, all_calls, fcs_2 + fcs_3 + fcs_4},
        {"4 down", {}, 11, {2 << 16, 3 << 16, 4 << 16 | 1}, without_4, fcs_2 + fcs_3},
        {"status", {"get_status", 4}, 11, {2 << 16, 3 << 16, 4 << 16 | 7}, without_4, fcs_2 + fcs_3},
        {"fcs", {"get_port_fcs", 3}, 11, {2 << 16, 3 << 16 | 11, 4 << 16}, all_calls, fcs_2 + fcs_4},
        {"begin", {"port_broadcast_begin"}, 9, {0, 0, 0}, read_links + "port_broadcast_begin(6)\n", fail},
        {"no phy id", {"get_port_phyid"}, 2, {0, 0, 0}, read_links + burst.substr(0, 51) + end, fail},
        {"3, 4 down", {}, 1, {0, 1, 1}, read_links, "No link port.\n"},
        {"memory", {}, 7, {UNWRITTEN, UNWRITTEN, UNWRITTEN}, "", "Allocate memory fail.\n"},
        {"slot", {}, 2, {UNWRITTEN, UNWRITTEN, UNWRITTEN}, "", "Port test no support(interface is NULL).\n"},
    };
    for (const auto &c : cases) {
        const std::string fault = c.fault;
        SCOPED_TRACE(fault);
        driver.failures = {c.failure};
        driver.ports[3].down_polls = fault == "3, 4 down" ? NEVER : 0;
        driver.ports[4].down_polls = fault.ends_with("4 down") ? NEVER : 0;
        simulation::fail_allocation(fault == "memory");
        if (fault == "slot")
            facmsg_vexa_diag_drv.port_broadcast_end = nullptr;
        const log_capture log(1);
        const auto record = ask<broadcast_test_record>(5);
        EXPECT_EQ(record.result, c.result);
        EXPECT_EQ(record.port_count, fault == "slot" ? UNWRITTEN : 3u);
        EXPECT_EQ(results(record), c.results);
        EXPECT_EQ(record.fcs_counts[2] == 0x100000004, c.log.ends_with(fcs_4));
        EXPECT_EQ(calls, c.calls);
        EXPECT_EQ(log.text_of("facmsg_port_broadcast_fun"), c.log);
    }
    facmsg_vexa_diag_drv = fake_table();
    driver.ports.clear();
    const auto record = ask<broadcast_test_record>(5);
    EXPECT_EQ(record.result, 2u);
    EXPECT_EQ(record.port_count, 0u);
}
