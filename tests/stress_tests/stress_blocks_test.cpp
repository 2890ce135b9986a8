/* SPDX-License-Identifier: MIT
 *
 * The parts of the stress tests: frames byte for byte, choice of speeds, judging of counters, VLANs of pairs.
 */
#include <cstdlib>
#include <gtest/gtest.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "packet/test_ports.h"
#include "simulation.h"
#include "stress_tests/stress_frames.h"
#include "stress_tests/stress_ports.h"
#include "stress_tests/stress_speed.h"
#include "stress_tests/stress_stat.h"
#include "trace.h"

using namespace std::string_literals;

struct stress_blocks : testing::Test {
    fake_driver driver;
    uint32_t ports[5] = {2, 4, 6, 7, 9};
};

TEST_F(stress_blocks, frames_byte_for_byte)
{
    const uint8_t pattern[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const std::string all = "\xFF\xFF\xFF\xFF\xFF\xFF", source = "\xF0\xF1\xF2\xF3\xF4\x23",
                      eight = "\1\2\3\4\5\6\7\10";
    const auto vlan1 = [](uint16_t pair) {
        return [pair](uint32_t length) { return vexa_packet_vlan1(0x123, length, pair); };
    };
    const auto ess = [&](uint32_t vlan_id) {
        return [&, vlan_id](uint32_t length) { return vexa_ess_packet(0x123, length, pattern, vlan_id); };
    };
    const auto serpentine = [&](uint32_t length) { return vexa_ess_serpentine_packet(0x123, length, pattern); };
    const std::string tag_1 = all + source + "\x81\0\0\1"s, zero = "\0"s;
    const struct {
        std::function<uint8_t *(uint32_t)> build;
        uint32_t length;
        std::string head, fill;
    } cases[] = {
        {vlan1(0x55AA), 64, tag_1, "\x55\xAA"},
        {vlan1(0x55AA), 128, tag_1, zero},
        {vlan1(0x55AA), 256, tag_1, zero},
        {vlan1(0x55AA), 512, tag_1, zero},
        {vlan1(0x55AA), 1518, tag_1, zero},
        {ess(300), 64, all + source + "\x81\0\1\x2C"s, eight},
        {ess(0), 64, all + source, eight},
        {ess(1), 1518, tag_1, eight},
        {serpentine, 256, "\xF0" + all.substr(1) + source + "\xF0\xF0", eight},
    };
    for (const auto &c : cases) {
        std::string expected = c.head;
        while (expected.size() < c.length)
            expected += c.fill;
        expected.resize(c.length);
        const log_capture log(2);
        uint8_t *const frame = c.build(c.length);
        EXPECT_EQ(std::string(reinterpret_cast<char *>(frame), c.length), expected) << c.length;
        EXPECT_NE(log.text().find("len:" + std::to_string(c.length) + ", pkt:0xf"), std::string::npos);
        free(frame);
        simulation::fail_allocation(1);
        EXPECT_EQ(c.build(c.length), nullptr);
        EXPECT_TRUE(log.text().ends_with("packet: malloc pkt data faild.\n") ||
                    log.text().ends_with("packet_vlan1: malloc pkt data faild.\n"));
    }
    const log_capture log(1);
    EXPECT_EQ(vexa_packet_vlan1(0x123, 100, 0), nullptr);
    EXPECT_EQ(log.text(), "vexa_packet_vlan1: pkt len:100 err.\n");
}

TEST_F(stress_blocks, speeds_by_kind_of_port)
{
    const struct {
        speed_index index;
        uint32_t support; /* bytes: extended, 5G, 2.5G, fiber 10G */
        uint8_t copper, ex_copper, fiber;
    } cases[] = {
        {{0, 0, 0}, 0x01010101, 1, 3, 3},   {{1, 1, 1}, 0x01010101, 2, 12, 4}, {{2, 2, 2}, 0x01010101, 3, 13, 3},
        {{2, 2, 1}, 0x00010001, 3, 12, 3},  {{2, 2, 1}, 0x01000001, 3, 3, 4},  {{1, 1, 1}, 0x00000101, 2, 3, 3},
        {{2, 2, 1}, 0x01010100, 3, 255, 4}, {{3, 3, 3}, 0x01010101, 3, 13, 3},
    };
    /* ports 2: copper, 4 and 6: extended, 7: a kind unknown, 9: fiber */
    for (const uint32_t port : ports) {
        driver.add_port(port);
        g_port_ability[port - 1] = {port != 9, port == 9};
    }
    driver.answers["get_port_type"] = [](uint32_t port, int) {
        return port == 2 ? 1 : port == 4 ? 9 : port == 6 ? 10 : 5;
    };
    for (const auto &c : cases) {
        driver.answers["get_ex_speed_support"] = [&](uint32_t, int) { return c.support; };
        speed_choice choice = {};
        EXPECT_EQ(vexa_port_speed(6, ports, 5, c.index, &choice), 0);
        EXPECT_EQ((std::vector{choice.copper, choice.ex_copper, choice.fiber}),
                  (std::vector{c.copper, c.ex_copper, c.fiber}));
        for (const uint32_t port : ports)
            EXPECT_EQ(driver.ports[port].status.speed, port == 2   ? c.copper
                                                       : port == 9 ? c.fiber
                                                                   : c.ex_copper)
                << port;
    }
    facmsg_vexa_diag_drv.get_ex_speed_support = nullptr;
    facmsg_vexa_diag_drv.port_speed_prepare = nullptr;
    driver.failures = {{"get_port_type", 2}, {"set_status", 6}};
    driver.ports[7].status.speed = 99;
    const log_capture log(1);
    speed_choice choice = {};
    EXPECT_EQ(vexa_port_speed(6, ports, 5, FASTEST, &choice), 1);
    EXPECT_EQ(choice.ex_copper, 255);
    EXPECT_EQ(driver.ports[7].status.speed, 99u);
    EXPECT_EQ(log.text_of("vexa_port_speed"), "get port 2 port_type faild.\nset port 6 speed 255 faild.\n");
}

/* Counters {in, ex, fcs} by port. */
static void count(fake_driver &driver, std::map<uint32_t, std::array<uint64_t, 3>> counters)
{
    driver.answers["get_port_stat"] = [=](uint32_t port, int nth) {
        return counters.at(port)[static_cast<size_t>(nth)];
    };
    driver.answers["get_port_fcs"] = [=](uint32_t port, int) { return counters.at(port)[2]; };
}

TEST_F(stress_blocks, judge_counters)
{
    constexpr uint64_t LARGE = uint64_t{1} << 32;
    count(driver, {{2, {10, 20, 0}}, {4, {20, 10, 7}}, {6, {5, 6, 0}}, {7, {6, 5 + LARGE, 0}}, {9, {3, 3, 0}}});
    uint8_t fcs[5] = {}, counts[5] = {};
    EXPECT_EQ(vexa_port_stat(6, ports, 5, fcs, counts), 1);
    EXPECT_EQ(std::string(std::begin(fcs), std::end(fcs)), "\0\1\0\0\0"s);
    EXPECT_EQ(std::string(std::begin(counts), std::end(counts)), "\0\0\1\1\0"s);
    EXPECT_EQ(vexa_port_stat(6, ports + 4, 1, fcs, counts), 0);
    trace_clear();
    EXPECT_EQ(vexa_port_stat(6, ports, 0, fcs, counts), 0);
    EXPECT_EQ(trace_text(), "");

    ess_flow_reply flow = {};
    count(driver, {{2, {8, 8, LARGE + 3}}, {4, {LARGE + 1, 1, 0}}, {6, {0, 0, 0}}});
    driver.failures = {{"get_port_fcs", 6}};
    EXPECT_EQ(vexa_ess_port_stat(6, ports, 3, &flow), 1);
    ess_flow_reply expected = {};
    expected.port_fcs_err[0] = expected.port_cnt_err[1] = 1;
    expected.in_pkts[1] = expected.ex_pkts[1] = 1;
    expected.fcs[0] = 3;
    EXPECT_EQ(memcmp(&flow, &expected, sizeof(flow)), 0);

    serpentine_flow_reply chain = {};
    count(driver, {{2, {20000, 20000, 3}}, {4, {19990, 19997, 0}}, {6, {19990, 19990, 0}}, {7, {19990, 19991, 0}}});
    const log_capture log(1);
    EXPECT_EQ(vexa_ess_serpentine_port_stat(6, ports, 4, 20000, &chain), 1);
    serpentine_flow_reply chain_expected = {};
    chain_expected.port_fcs_err[0] = chain_expected.port_in_err[1] = chain_expected.port_ex_err[3] = 1;
    chain_expected.in_pkts[1] = 19990;
    chain_expected.ex_pkts[3] = 19991;
    chain_expected.fcs[0] = 3;
    EXPECT_EQ(memcmp(&chain, &chain_expected, sizeof(chain)), 0);
    EXPECT_EQ(log.text_of("vexa_ess_serpentine_port_stat"), "Get port2 stat fcs = 3.\n"
                                                            "Get port4 stat in_pkts = 19990. last_send_cnt = 19997\n"
                                                            "Get port7 stat ex_pkts = 19991. last_send_cnt = 19990\n");
}

TEST_F(stress_blocks, cpu_count_is_a_difference)
{
    driver.add_port(2);
    uint32_t received = 0;
    EXPECT_EQ(vexa_ess_serpentine_cpu_recv_packet(2, &received), 0);
    port_packet_req request = {0x102, 0, 1, 0, 500};
    const pack_info info = {0, 0, 0x102};
    const uint8_t frame[64] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0xF0};
    while (request.frame_count-- > 0)
        vexa_recv_packet(&info, frame, sizeof(frame));
    EXPECT_EQ(vexa_ess_serpentine_cpu_recv_packet(2, &received), 0);
    EXPECT_EQ(received, 500u);
    EXPECT_EQ(vexa_ess_serpentine_cpu_recv_packet(4, &received), -1);
    EXPECT_EQ(received, 500u);
}

/* The lines in GBK, byte by byte: the emulated target has no converter. */
static const std::string gbk_damaged = "\xb6\xcb\xbf\xda"
                                       "2 \xbd\xd3\xca\xd5\xb5\xbd"
                                       "fcs\xb4\xed\xb0\xfc\r\n"; // 端口2 接收到fcs错包
static const std::string gbk_unequal =
    "\xb6\xcb\xbf\xda"
    "1 \xca\xd5\xb7\xa2\xbc\xc6\xca\xfd\xb2\xbb\xd2\xbb\xd6\xc2\r\n"; // 端口1 收发计数不一致
static const std::string gbk_failed = "\xb6\xcb\xbf\xda\xb2\xe2\xca\xd4\xca\xa7\xb0\xdc\r\n"; // 端口测试失败
static const std::string gbk_passed =
    "\xcb\xf9\xd3\xd0\xb6\xcb\xbf\xda\xb2\xe2\xca\xd4\xcd\xa8\xb9\xfd\r\n"; // 所有端口测试通过

TEST_F(stress_blocks, summary_is_in_gbk)
{
    const std::string op = "dump_err_ports:       ";
    ess_flow_reply reply = {};
    reply.port_count = 3;
    reply.port_fcs_err[1] = reply.port_fcs_err[3] = reply.port_cnt_err[0] = 1;
    for (const int level : {1, 2}) {
        const log_capture log(level);
        dump_err_ports(&reply);
        EXPECT_EQ(log.text(), level == 1 ? "" : op + gbk_damaged + op + gbk_unequal + op + gbk_failed);
    }
    const log_capture log(2);
    reply = {};
    dump_err_ports(&reply);
    EXPECT_EQ(log.text(), op + gbk_passed);
}

TEST_F(stress_blocks, pvids_of_pairs)
{
    EXPECT_EQ(vexa_port_pvid(6, ports, 3, 1), 0);
    EXPECT_EQ(vexa_port_pvid(6, ports, 2, 0), 0);
    EXPECT_EQ(trace_text(), "vlan(6,2,100,1)\nvlan(6,6,102,1)\n"
                            "set_pvid(6,2,100)\nset_pvid(6,4,100)\nset_pvid(6,6,102) x2\n"
                            "set_pvid(6,2,1)\nset_pvid(6,4,1)\nvlan(6,2,100,0)\n");
    driver.failures = {{"set_pvid", 2, 0, 1}, {"vlan", 2, 0, 4}};
    EXPECT_EQ(vexa_port_pvid(6, ports, 2, 1), 5);
    facmsg_vexa_diag_drv.vlan = nullptr;
    facmsg_vexa_diag_drv.set_pvid = nullptr;
    const log_capture log(1);
    EXPECT_EQ(vexa_port_pvid(6, ports, 2, 1), -1);
    EXPECT_EQ(log.text(), "vexa_port_pvid: vexa_port_pvid no support(set_pvid:(nil), vlan:(nil)).\n");
}
