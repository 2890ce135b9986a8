/* SPDX-License-Identifier: MIT
 *
 * Where VLANs, loops and static addresses lead frames, through the driver functions that set them up.
 */
#include <gtest/gtest.h>

#include "sim/driver/driver_table.h"
#include "test_bench.h"

using namespace sim;

constexpr mac_address BROADCAST = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
constexpr mac_address CHAIN_MAC = {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/* Four 1G ports without cables, all looped in their PHYs. */
struct looped_bench {
    explicit looped_bench(const std::string &faults = "")
        : board(parse_board("boot_ms = 0\n[[ports]]\nports = \"1-4\"\ncopper_speeds = [\"1G\"]\n" + faults, "b.toml")),
          live(board, 0, ignore)
    {
        drive(live, false);
        drv = driver_table();
        for (const uint32_t number : {1, 2, 3, 4})
            EXPECT_EQ(drv.port_phy_loopback(0, number, 0), 0);
        pass_ms(300);
    }

    void pass_ms(uint64_t duration)
    {
        board.clock.run_until(board.clock.now() + duration * MS);
    }

    void send(uint32_t number, mac_address to, uint16_t vlan = 0)
    {
        std::vector<uint8_t> bytes(128);
        std::copy(to.begin(), to.end(), bytes.begin());
        if (vlan) {
            bytes[12] = 0x81;
            bytes[15] = static_cast<uint8_t>(vlan);
        }
        board.transmit(*board.find_port(number), bytes);
    }

    const port_counters &count(uint32_t number)
    {
        return board.find_port(number)->counters;
    }

    sim::board board;
    live_board live;
    vexa_diag_drv drv;
};

TEST(fabric, circulates_a_pairs_frames_until_its_vlan_is_gone)
{
    looped_bench bench;
    EXPECT_EQ(bench.drv.port_vlan_pair(0, 1, 2, 100, 0, 0, 1), 0);
    for (const uint32_t number : {1, 2})
        bench.send(number, BROADCAST, 100);
    bench.pass_ms(1000);
    /* Two frames of 128 bytes at 10 Mbit/s, 121.6 us and up to the next microsecond: one on either port at any time. */
    EXPECT_NEAR(static_cast<double>(bench.count(1).ex_pkts), 1e6 / 122, 1);
    EXPECT_EQ(bench.drv.port_vlan_pair(0, 1, 2, 100, 0, 0, 0), 0);
    bench.pass_ms(100);
    const auto at_the_end = bench.count(1).ex_pkts;
    bench.pass_ms(100);
    EXPECT_EQ(bench.count(1).ex_pkts, at_the_end);
    for (const uint32_t number : {1, 2})
        EXPECT_EQ(bench.count(number).in_pkts, bench.count(number).ex_pkts);
    EXPECT_EQ(bench.count(3).ex_pkts, 0u);
    EXPECT_FALSE(bench.board.cpu.has_frames());
}

TEST(fabric, bounds_a_storm_by_the_wires)
{
    looped_bench bench;
    bench.send(1, BROADCAST, 1);
    bench.pass_ms(1000);
    for (const uint32_t number : {1, 2, 3, 4})
        EXPECT_NEAR(static_cast<double>(bench.count(number).ex_pkts), 1e6 / 118.4, 5) << "124 bytes, untagged";
    for (const uint32_t number : {1, 2, 3, 4})
        EXPECT_EQ(bench.drv.port_vlan1(0, number, 0), 0);
    bench.pass_ms(1000);
    EXPECT_EQ(bench.drv.port_vlan1(0, 1, 1), 0);
    for (const uint32_t number : {1, 2, 3, 4})
        EXPECT_EQ(bench.count(number).in_pkts, bench.count(number).ex_pkts);
    const auto at_the_end = bench.count(1).ex_pkts;
    bench.send(1, BROADCAST);
    bench.send(1, {0, 0, 0, 0, 0, 2});
    bench.pass_ms(1000);
    EXPECT_EQ(bench.count(1).ex_pkts, at_the_end + 2) << "nothing waited, and nobody to flood to";
}

struct chain_case {
    std::string faults;
    std::array<port_counters, 3> expected; /* ports 1 to 3: in, out, FCS errors */
    size_t at_cpu;
};

TEST(fabric, carries_a_chain_through_every_port_once)
{
    const chain_case cases[] = {
        {"", {{{100, 100, 0}, {100, 100, 0}, {100, 100, 0}}}, 100},
        {fault("fcs_errors", 2, "every = 10"), {{{100, 100, 0}, {100, 100, 10}, {90, 90, 0}}}, 90},
        {fault("frame_loss", 1, "every = 10"), {{{90, 100, 0}, {90, 90, 0}, {90, 90, 0}}}, 90},
    };
    for (const auto &c : cases) {
        looped_bench bench(c.faults);
        bench.drv.port_vlan_pair(0, 1, 1, 100, 1, 1, 1);
        for (const uint32_t number : {1, 2, 3}) {
            bench.drv.port_vlan_pair(0, number, number < 3 ? number + 1 : number, 100 + number, 0, number < 3, 1);
            bench.drv.set_pvid(0, number, 100 + number);
        }
        bench.drv.vlan_static_mac(0, 3, CHAIN_MAC.data(), 103, 1);
        bench.drv.port_vlan_pair(0, 1, 1, 0, 1, 1, 1);
        for (int i = 0; i < 100; i++)
            bench.send(1, CHAIN_MAC);
        bench.pass_ms(100);
        for (uint32_t i = 0; i < 3; i++) {
            const auto &counted = bench.count(i + 1);
            EXPECT_EQ(counted.in_pkts, c.expected[i].in_pkts) << c.faults << i + 1;
            EXPECT_EQ(counted.ex_pkts, c.expected[i].ex_pkts) << c.faults << i + 1;
            EXPECT_EQ(counted.fcs_errors, c.expected[i].fcs_errors) << c.faults << i + 1;
        }
        const auto at_cpu = bench.board.cpu.take_frames();
        ASSERT_EQ(at_cpu.size(), c.at_cpu) << c.faults;
        EXPECT_EQ(at_cpu.front().info.phy_id, 0x103u);
        EXPECT_EQ(at_cpu.front().bytes.size(), 128u) << "untagged, as it was sent";
    }
}

TEST(fabric, gives_the_broadcast_burst_to_every_receiver_and_ends_it)
{
    test_bench bench;
    bench.pass_ms(300);
    bench.board->fabric.broadcast_test = true;
    bench.send(1, 10, BROADCAST);
    bench.pass_ms(1000);
    const uint64_t expected_in[] = {10, 20, 10, 0}; /* port 2 gets the burst and the copy that port 1 sends */
    for (uint32_t number = 1; number <= 4; number++)
        EXPECT_EQ(bench.port(number).counters.in_pkts, expected_in[number - 1]) << number;
}

TEST(link, of_a_looped_phy_ignores_the_cable)
{
    test_bench bench(fault("dead_link", 3));
    for (const uint32_t number : {1, 3, 4})
        bench.board->loop_phy(bench.port(number), true);
    bench.pass_ms(300);
    const bool expected[] = {true, false, false, true};
    for (uint32_t number = 1; number <= 4; number++)
        EXPECT_EQ(bench.port(number).link, expected[number - 1]) << number;
    bench.board->loop_phy(bench.port(1), false);
    bench.board->loop_phy(bench.port(4), false);
    EXPECT_FALSE(bench.port(1).link || bench.port(4).link);
    bench.pass_ms(300);
    EXPECT_TRUE(bench.port(1).link && bench.port(2).link);
    EXPECT_FALSE(bench.port(4).link);
}

TEST(egress, loses_what_its_queue_cannot_take_and_lets_the_cpu_wait)
{
    looped_bench bench;
    for (int i = 0; i < 600; i++)
        bench.send(1, CHAIN_MAC);
    const auto before = bench.board.clock.now();
    const pack_info info = {0, 0, 0x101};
    const uint8_t bytes[64] = {};
    EXPECT_EQ(bench.drv.send_packet(&info, bytes, sizeof bytes), 0);
    EXPECT_EQ(bench.board.clock.now() - before, 122u) << "as long as the frame on the wire takes, not just 100 us";
    bench.pass_ms(1000);
    EXPECT_EQ(bench.count(1).ex_pkts, 512u);
}
