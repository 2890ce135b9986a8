/* SPDX-License-Identifier: MIT
 *
 * The library's PoE requests on simulated boards: what each shipped fault makes of its port, and how the board is left.
 */
#include <array>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "facmsg.h"
#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"
#include "sim/host/host_time.h"

using namespace sim;

struct poe_bench {
    explicit poe_bench(const std::string &text) : board(parse_board(text, SHIPPED_BOARDS "/bench.toml"))
    {
        drive(live, false);
        use_board_time(live);
        facmsg_vexa_diag_drv = driver_table();
    }
    template <class Reply> Reply ask(uint32_t type)
    {
        alignas(8) char request[FACMSG_BUFFER_SIZE] = {};
        const facmsg_header header = {type, sizeof(Reply)};
        memcpy(request, &header, sizeof(header));
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        EXPECT_EQ(facmsg_lib_test_main(ends[0], reinterpret_cast<facmsg_request *>(request)), 0);
        EXPECT_EQ(read(ends[1], request, sizeof(request)), ssize_t{sizeof(header) + sizeof(Reply)});
        close(ends[0]);
        close(ends[1]);
        Reply reply;
        memcpy(&reply, request + sizeof(header), sizeof(Reply));
        return reply;
    }
    sim::board board;
    live_board live{board, 0, nullptr};
};

using verdict = std::array<uint32_t, 4>; /* codes of state, class, overload and power-off */

TEST(poe, a_fault_shows_on_its_port_alone_and_all_outputs_are_left_on)
{
    const uint32_t no_supply = 3850 << 16 | 17, no_overload = 2550 << 16 | 19;
    const struct {
        const char *board;
        uint32_t type, port, result, seconds;
        verdict expected;
    } cases[] = {
        {"healthy-28", 6, 12, 0, 26, {0, 4, 0, 0}},
        {"healthy-28", 13, 5, 0, 52, {0, 8, 0, 0}},
        {"healthy-28", 14, 5, 0, 31, {0, 8, 0, 0}},
        {"poe-power-unreadable", 6, 12, 1, 26, {0, 4, 0, 12}},
        {"poe-limit-refused", 13, 12, 1, 72, {0, 4, 13, 0}},
        {"poe-state-unreadable", 6, 12, 1, 26, {14, 0, 0, 0}},
        {"poe-stays-off", 13, 12, 1, 52, {15, 0, 0, 0}},
        {"poe-no-detection", 6, 12, 1, 26, {16, 0, 0, 0}},
        {"poe-low-supply", 6, 12, 1, 26, {no_supply, 0, 0, 0}},
        {"poe-overload-unreadable", 6, 12, 1, 46, {0, 4, 18, 0}},
        {"poe-no-overload", 6, 12, 1, 46, {0, 4, no_overload, 0}},
        {"poe-late-overload", 13, 12, 0, 72, {0, 4, 0, 0}},
        {"poe-stays-on", 13, 12, 1, 52, {0, 4, 0, 20}},
        {"poe-hungry-device", 14, 5, 1, 31, {21, 0, 0, 0}},
        {"poe-class-too-high", 6, 12, 1, 26, {17, 0, 0, 0}},
        {"poe-class-too-high", 13, 12, 1, 52, {22, 0, 0, 0}},
        {"poe-class-unreadable", 6, 12, 1, 26, {0, 255, 0, 0}},
        {"poe-wrong-class", 6, 12, 0, 26, {0, 2, 0, 0}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.board);
        poe_bench bench("base = \"" + std::string(c.board) + ".toml\"");
        const auto start = bench.board.clock.now();
        const auto reply = bench.ask<poe_test_reply>(c.type);
        EXPECT_EQ(bench.board.clock.now() - start, c.seconds * 1000000);
        EXPECT_EQ(reply.result, c.result);
        ASSERT_EQ(reply.port_count, c.type == 13 ? 16u : 8u);
        for (uint32_t k = 0; k < reply.port_count; k++) {
            const uint32_t number = reply.ports[k];
            const bool hpoe = number <= 8;
            EXPECT_EQ(
                (verdict{reply.state_code[k], reply.pd_class[k], reply.overload_code[k], reply.power_off_code[k]}),
                number == c.port ? c.expected : (verdict{0, hpoe ? 8u : 4u, 0, 0}))
                << number;
            const auto &output = *bench.board.poe.find(number);
            EXPECT_EQ(output.limit_mw(), hpoe ? 100000u : 30000u) << number;
            EXPECT_EQ(output.state() == poe_state::OFF, number == c.port && c.expected[0] == 15) << number;
            EXPECT_EQ(output.state() == poe_state::POWERED, number != c.port || c.expected[0] % 14 == 0) << number;
        }
    }
}

TEST(poe, a_device_below_three_watts_trips_nothing)
{
    poe_bench bench("base = \"healthy-28.toml\"\n[[loads]]\nports = 9\nclass = 1\ndraw_mw = 2990\n");
    EXPECT_EQ(bench.ask<poe_test_reply>(6).overload_code[0], 299u << 16 | 19);
}

TEST(poe, an_output_that_goes_on_again_searches_anew)
{
    poe_bench bench("base = \"healthy-28.toml\"");
    auto &output = *bench.board.poe.find(9);
    for (const auto expected : {poe_state::SEARCHING, poe_state::SEARCHING, poe_state::POWERED}) {
        output.enable(expected == poe_state::POWERED); /* the last time it stays on */
        output.enable(true);
        bench.live.wait(1000000);
        EXPECT_EQ(output.state(), expected);
    }
}

TEST(poe, vop_is_measured_at_outputs_that_are_off)
{
    poe_bench bench(
        "base = \"poe-stays-on.toml\"\n[[faults]]\nkind = \"poe_low_supply\"\nports = 2\nsupply_mv = 43000");
    const auto reply = bench.ask<vop_test_reply>(17);
    EXPECT_EQ(reply.port_count, 16u);
    for (uint32_t k = 0; k < 16; k++) {
        EXPECT_EQ(reply.vop_status[k], k == 11 ? 1u : 0u);
        EXPECT_EQ(reply.vop_value[k], k == 11 ? 0u : k == 1 ? 43000u : 54000u);
        EXPECT_NE(bench.board.poe.find(k + 1)->state(), poe_state::OFF);
    }
}

TEST(poe, an_upgrade_takes_its_time_and_restarts_the_outputs)
{
    poe_bench bench("base = \"healthy-28.toml\"\n[poe]\nfirmware = 7\nnew_firmware = 9\nupgrade_ms = 45000");
    bench.board.poe.find(9)->set_limit(4000);
    const auto before = bench.ask<poe_mcu_ver_reply>(16);
    EXPECT_EQ(before.cur_ver, 7u);
    EXPECT_EQ(before.new_ver, 9u);
    const auto start = bench.board.clock.now();
    EXPECT_EQ(bench.ask<poe_mcu_upgrade_reply>(15).result, 0u);
    EXPECT_EQ(bench.board.clock.now() - start, 45000000u);
    EXPECT_EQ(bench.ask<poe_mcu_ver_reply>(16).cur_ver, 9u);
    bench.live.wait(1500000);
    EXPECT_EQ(bench.board.poe.find(9)->state(), poe_state::POWERED);
}
