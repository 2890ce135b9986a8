/* SPDX-License-Identifier: MIT
 *
 * The FPGA, bit sequences, and what the driver says of kinds of ports.
 */
#include <algorithm>
#include <gtest/gtest.h>

#include "sim/driver/driver_table.h"
#include "test_bench.h"

using namespace sim;

constexpr mac_address FPGA_REPLY_MAC = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0B};

static std::vector<uint8_t> fpga_frame(uint8_t operation, uint8_t address, uint8_t words, std::vector<uint8_t> data)
{
    std::vector<uint8_t> bytes = {0x01, 0x6B, 0xE2,      0, 0,    0x0A, 0x01, 0x6B, 0xE2, 0, 0, 0x0B,    0xFF, 0xF9,
                                  0,    0,    operation, 0, 0xF3, 0xF3, 0,    0,    0,    0, 0, address, 0,    words};
    bytes[21] = static_cast<uint8_t>(6 + data.size());
    bytes.resize(128);
    std::copy(data.begin(), data.end(), bytes.begin() + 28);
    bytes.resize(64);
    return bytes;
}

TEST(fpga, keeps_what_proper_requests_write_and_refuses_others)
{
    fpga device(false);
    EXPECT_FALSE(device.handle(frame(fpga_frame(1, 0x10, 1, {1, 2, 3, 4, 5, 6})))) << "two bytes are no word";
    const auto answer = device.handle(frame(fpga_frame(0, 0x0E, 2, {})));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->destination(), FPGA_REPLY_MAC);
    const auto bytes = answer->bytes();
    EXPECT_EQ(std::vector(bytes.begin() + 20, bytes.begin() + 36),
              (std::vector<uint8_t>{0, 14, 0, 0, 0, 0x0E, 0, 2, 0, 0, 1, 2, 3, 4, 0, 0}));
    EXPECT_EQ(device.refused(), 0u);

    const auto wrong_at = [](size_t at) {
        auto request = fpga_frame(1, 0x10, 2, {9, 9, 9, 9, 9, 9, 9, 9});
        request[at] ^= 0x20;
        return request;
    };
    for (const size_t at : {0, 11, 12, 16, 18, 20, 27}) /* addresses, type, operation, mark, length, words */
        EXPECT_FALSE(device.handle(frame(wrong_at(at))));
    EXPECT_FALSE(device.handle(frame(std::vector<uint8_t>(27))));
    EXPECT_FALSE(device.handle(frame(fpga_frame(1, 0x10, 20, std::vector<uint8_t>(80))))) << "cut off at 64 bytes";
    EXPECT_EQ(device.refused(), 9u);
    EXPECT_EQ(device.handle(frame(fpga_frame(0, 0x0E, 2, {})))->bytes(), bytes) << "and nothing was written";
    EXPECT_FALSE(fpga(true).handle(frame(fpga_frame(0, 0, 1, {}))));
}

TEST(fpga, reaches_the_cpu_by_its_address_only)
{
    test_bench bench("[fpga]\nports = \"37,38\"\n");
    bench.pass_ms(300);
    for (const bool entry : {false, true}) {
        if (entry)
            bench.board->fabric.add_cpu_mac(FPGA_REPLY_MAC);
        bench.board->transmit(bench.port(38), fpga_frame(0, 0, 1, {}));
        bench.pass_ms(50);
        EXPECT_EQ(bench.received().count(0x126), entry ? 1u : 0u);
    }
    EXPECT_EQ(bench.port(3).counters.in_pkts, 0u) << "internal ports flood to nobody";
}

struct prbs_case {
    const char *name;
    uint32_t looped;
    std::vector<uint32_t> started;
    uint32_t expected_at_1;
};

TEST(prbs, locks_on_a_sequence_and_counts_its_errors)
{
    const prbs_case cases[] = {
        {"not started", 1, {}, PRBS_NO_LOCK},
        {"looped", 1, {1}, 30},
        {"cable, far end silent", 0, {1}, PRBS_NO_LOCK},
        {"cable, both ends", 0, {1, 2}, 30},
        {"far end looped away", 2, {1, 2}, PRBS_NO_LOCK},
    };
    for (const auto &c : cases) {
        board fiber(parse_board("cables = \"1,2\"\n[[ports]]\nports = \"1,2\"\nfiber_speeds = [\"10G\"]\n" +
                                    fault("prbs_errors", 1, "per_second = 3"),
                                "b.toml"));
        live_board live(fiber, 0, ignore);
        drive(live, false);
        const auto drv = driver_table();
        uint32_t status = 0;
        if (c.looped)
            drv.port_phy_loopback(0, c.looped, 0);
        for (const auto number : c.started)
            drv.begin_end_prbs(0, number, 1, &status);
        live.wait(10000 * MS);
        EXPECT_EQ(drv.get_clear_prbs_status(0, 1, &status), 0);
        EXPECT_EQ(status, c.expected_at_1) << c.name;
        drv.get_clear_prbs_status(0, 1, &status);
        EXPECT_EQ(status, c.expected_at_1 & PRBS_NO_LOCK) << c.name << ", counting anew";
    }
}

TEST(driver, tells_kinds_of_ports_apart)
{
    board mixed(load_board(SHIPPED_BOARDS "/mixed.toml"));
    live_board live(mixed, 0, ignore);
    drive(live, false);
    const auto drv = driver_table();
    for (const auto &[number, expected] : {std::pair(1u, 10u), {5u, 1u}, {9u, 2u}}) {
        uint32_t type = 0;
        EXPECT_EQ(drv.get_port_type(0, number, &type), 0);
        EXPECT_EQ(type, expected) << number;
    }
    ex_speed_support support{};
    drv.get_ex_speed_support(&support);
    EXPECT_TRUE(support.is_support_ex_speed && support.is_support_ex_5G && support.is_support_ex_2500M &&
                support.is_support_fiber_10G);
}
