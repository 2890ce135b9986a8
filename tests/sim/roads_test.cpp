/* SPDX-License-Identifier: MIT
 *
 * Links and the roads of frames.
 */
#include <gtest/gtest.h>

#include "test_bench.h"

using namespace sim;
using counts = std::map<uint32_t, size_t>;

TEST(event_clock, keeps_order_at_equal_times)
{
    event_clock clock;
    std::string order;
    clock.after(5, [&] { order += 'b'; });
    clock.after(1, [&] {
        order += 'a';
        clock.after(4, [&] { order += 'd'; });
    });
    clock.after(5, [&] { order += 'c'; });
    clock.run_until(5);
    EXPECT_EQ(order, "abcd");
}

struct link_case {
    const char *name;
    std::string faults;
    uint32_t port;
    std::vector<std::pair<uint64_t, bool>> link_at_ms;
};

TEST(link, follows_ends_and_time)
{
    const link_case cases[] = {
        {"plug", "", 3, {{299, false}, {300, true}}},
        {"cable", "", 2, {{299, false}, {300, true}}},
        {"nothing plugged in", "", 4, {{10000, false}}},
        {"dead", fault("dead_link", 1), 2, {{10000, false}}},
        {"late", fault("late_link", 1, "late_ms = 1000"), 2, {{1299, false}, {1300, true}}},
        {"flapping",
         fault("flapping_link", 3, "up_ms = 100\ndown_ms = 50"),
         3,
         {{300, true}, {399, true}, {400, false}, {449, false}, {450, true}, {550, false}, {600, true}}},
    };
    for (const auto &c : cases) {
        test_bench bench(c.faults);
        for (const auto &[at_ms, up] : c.link_at_ms) {
            bench.board->clock.run_until(at_ms * MS);
            EXPECT_EQ(bench.port(c.port).link, up) << c.name << " at " << at_ms;
        }
    }
}

TEST(link, restarts_with_every_change_and_needs_both_ends_alike)
{
    test_bench bench;
    bench.pass_ms(300);
    auto status = bench.port(1).status();
    EXPECT_TRUE(bench.board->set_status(bench.port(1), status));
    EXPECT_TRUE(bench.port(1).link) << "nothing changed";
    status.speed = 2;
    EXPECT_TRUE(bench.board->set_status(bench.port(1), status));
    bench.pass_ms(1000);
    EXPECT_FALSE(bench.port(2).link) << "speeds differ";
    EXPECT_TRUE(bench.board->set_status(bench.port(2), status));
    bench.pass_ms(299);
    EXPECT_FALSE(bench.port(2).link);
    bench.pass_ms(1);
    EXPECT_TRUE(bench.port(2).link);
    bench.board->switch_port(bench.port(1), false);
    EXPECT_FALSE(bench.port(2).link);
    status.speed = 4;
    EXPECT_FALSE(bench.board->set_status(bench.port(1), status)) << "no such speed";
}

TEST(link, combo_port_keeps_a_mode_per_medium)
{
    board combo(parse_board("[[ports]]\nports = 1\ncopper_speeds = [\"1G\"]\nfiber_speeds = [\"1G\", \"10G\"]\n", "b"));
    auto &port = *combo.find_port(1);
    auto status = port.status();
    for (const uint32_t speed : {4u, 3u}) { /* to fiber at its own speed, and back */
        status.medium = 1 - status.medium;
        ASSERT_TRUE(combo.set_status(port, status));
        status = port.status();
        EXPECT_EQ(status.speed, speed);
    }
}

TEST(link, needs_one_medium_at_both_ends)
{
    board mixed(parse_board("cables = [[1, 2]]\n[[ports]]\nports = 1\ncopper_speeds = [\"1G\"]\n"
                            "[[ports]]\nports = 2\nfiber_speeds = [\"1G\"]\n",
                            "b"));
    mixed.clock.run_until(10000 * MS);
    EXPECT_FALSE(mixed.find_port(1)->link);
}

struct road_case {
    const char *name;
    std::string faults;
    uint32_t port;
    counts expected; /* of 500 frames sent */
    uint64_t fcs_errors_at_3;
};

TEST(road, ends_where_cables_and_faults_lead)
{
    const road_case cases[] = {
        {"plug", "", 3, {{0x103, 500}}, 0},
        {"cable", "", 1, {{0x102, 500}}, 0},
        {"nothing plugged in", "", 4, {}, 0},
        {"dead", fault("dead_link", 3), 3, {}, 0},
        {"loss", fault("frame_loss", 3, "every = 50"), 3, {{0x103, 490}}, 0},
        {"damage", fault("fcs_errors", 3, "every = 100"), 3, {{0x103, 495}}, 5},
        {"loss at the far end", fault("frame_loss", 2, "every = 7"), 1, {{0x102, 429}}, 0},
        {"loss at the near end", fault("frame_loss", 1, "every = 7"), 1, {{0x102, 500}}, 0},
    };
    for (const auto &c : cases) {
        test_bench bench(c.faults);
        bench.pass_ms(300);
        bench.send(c.port, 500);
        bench.pass_ms(500);
        EXPECT_EQ(bench.received(), c.expected) << c.name;
        EXPECT_EQ(bench.port(3).counters.fcs_errors, c.fcs_errors_at_3) << c.name;
    }
}

TEST(road, leads_to_the_cpu_by_its_address_only)
{
    test_bench bench;
    bench.pass_ms(300);
    bench.send(3, 2, {0, 0, 0, 0, 0, 2});
    bench.pass_ms(10);
    EXPECT_EQ(bench.received(), counts());
    EXPECT_EQ(bench.board->fabric.dropped(), 2u);
    EXPECT_TRUE(bench.board->fabric.remove_cpu_mac(CPU_MAC));
    EXPECT_FALSE(bench.board->fabric.remove_cpu_mac(CPU_MAC));
    bench.send(3, 1);
    bench.pass_ms(10);
    EXPECT_EQ(bench.received(), counts());
}

TEST(road, takes_its_time_and_breaks_with_the_link)
{
    /* 128 bytes and 24 around them at 10 Mbit/s: 121.6 us a frame. */
    test_bench bench;
    bench.pass_ms(300);
    bench.send(3, 10);
    bench.board->clock.run_until(300 * MS + 121);
    EXPECT_EQ(bench.received(), counts()) << "not before the last bit";
    bench.board->clock.run_until(300 * MS + 1215);
    EXPECT_EQ(bench.received(), (counts{{0x103, 9}}));
    bench.board->clock.run_until(300 * MS + 1216);
    EXPECT_EQ(bench.received(), (counts{{0x103, 1}}));
    bench.send(3, 10);
    bench.board->clock.run_until(300 * MS + 1216 + 365);
    bench.board->switch_port(bench.port(3), false);
    bench.pass_ms(100);
    EXPECT_EQ(bench.received(), (counts{{0x103, 3}}));
    EXPECT_EQ(bench.port(3).counters.ex_pkts, 13u);
}

TEST(road, is_counted_unless_the_counter_is_stuck)
{
    for (const bool stuck : {false, true}) {
        test_bench bench(stuck ? fault("stuck_counter", 3) : "");
        bench.pass_ms(300);
        bench.send(3, 5);
        bench.pass_ms(10);
        EXPECT_EQ(bench.received(), (counts{{0x103, 5}}));
        EXPECT_EQ(bench.port(3).counters.in_pkts, stuck ? 0u : 5u);
        EXPECT_EQ(bench.port(3).counters.ex_pkts, 5u);
    }
}
