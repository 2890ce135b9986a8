/* SPDX-License-Identifier: MIT
 *
 * The driver table at every pace: order of frames, calls made to fail, dropped slots.
 */
#include <chrono>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "sim/driver/driver_table.h"
#include "test_bench.h"

using namespace sim;

static std::mutex g_mutex;
static std::vector<uint32_t> g_delivered; /* phy id and number of each frame, as one word */

static void deliver(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    const std::lock_guard guard(g_mutex);
    g_delivered.push_back(info->phy_id << 16 | frame[length - 1]);
}

static size_t delivered()
{
    const std::lock_guard guard(g_mutex);
    return g_delivered.size();
}

/* Sends 20 numbered frames to each of the ports 1 to 3 in turn and returns what came back, in order. */
static std::vector<uint32_t> round_at(double pace)
{
    g_delivered.clear();
    test_bench bench;
    bench.pass_ms(300);
    live_board live(*bench.board, pace, deliver);
    drive(live, false);
    const auto table = driver_table();
    for (uint8_t number = 0; number < 60; number++) {
        const pack_info info = {0, 1, 0x101u + number % 3};
        uint8_t frame[64] = {0, 0, 0, 0, 0, 1};
        frame[63] = number;
        EXPECT_EQ(table.send_packet(&info, frame, sizeof frame), 0);
        live.wait(5 * MS);
    }
    live.wait(100 * MS);
    for (int i = 0; i < 1000 && delivered() < 60; ++i) /* handing over may lag behind the wall clock */
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const std::lock_guard guard(g_mutex);
    return g_delivered;
}

TEST(driver, delivers_the_same_at_every_pace)
{
    std::vector<uint32_t> expected;
    const uint32_t far_end[] = {0x102, 0x101, 0x103};
    for (uint32_t number = 0; number < 60; number++)
        expected.push_back(far_end[number % 3] << 16 | number);
    EXPECT_EQ(round_at(0), expected);
    EXPECT_EQ(round_at(2), expected);
}

TEST(driver, sending_takes_board_time)
{
    test_bench bench;
    live_board live(*bench.board, 0, deliver);
    drive(live, false);
    const pack_info known = {0, 1, 0x101};
    const pack_info unknown = {0, 1, 1};
    const uint8_t frame[64] = {};
    const auto table = driver_table();
    EXPECT_EQ(table.send_packet(&known, frame, sizeof frame), 0) << "no link is no error";
    EXPECT_EQ(table.send_packet(&unknown, frame, sizeof frame), -1);
    EXPECT_EQ(table.send_packet(&known, frame, 13), -1);
    EXPECT_EQ(bench.board->clock.now(), 300u);
}

TEST(driver, hands_the_hosts_words_back)
{
    test_bench bench;
    live_board live(*bench.board, 0, deliver);
    drive(live, false);
    const auto table = driver_table();
    port_status_row status = {7, 1, 2, 0, 1, 8};
    ASSERT_EQ(table.set_status(0, 1, &status), 0);
    ASSERT_EQ(table.get_status(0, 1, &status), 0);
    EXPECT_EQ(status.host_word_0, 7u);
    EXPECT_EQ(status.host_word_5, 8u);
    EXPECT_EQ(status.link, 0u) << "link is not for the caller to set";
    EXPECT_EQ(table.get_status(0, 5, &status), -1);
}

TEST(driver, fails_the_calls_that_the_board_says)
{
    test_bench bench("[[faults]]\nkind = \"failing_call\"\nslot = \"get_status\"\nports = 2\nfrom_call = 2\ncalls = 2\n"
                     "result = -7\n[[faults]]\nkind = \"failing_call\"\nslot = \"set_factory_mode\"\n" +
                     std::string("[[faults]]\nkind = \"failing_call\"\nslot = \"send_packet\"\nports = 3\n"));
    live_board live(*bench.board, 0, deliver);
    drive(live, false);
    const auto table = driver_table();
    port_status_row status;
    for (const int expected : {0, -7, -7, 0, 0}) {
        EXPECT_EQ(table.get_status(0, 1, &status), 0);
        EXPECT_EQ(table.get_status(0, 2, &status), expected);
    }
    EXPECT_EQ(table.set_factory_mode(), -1);
    EXPECT_FALSE(bench.board->factory_mode) << "a call that fails does nothing";
    const uint8_t frame[64] = {};
    for (const uint32_t number : {1u, 3u}) {
        const pack_info info = {0, 1, 0x100 + number};
        EXPECT_EQ(table.send_packet(&info, frame, sizeof frame), number == 3 ? -1 : 0);
    }
}

TEST(driver, leaves_dropped_slots_empty)
{
    for (const auto name : slot_names()) {
        const auto full = driver_table();
        const auto less = driver_table({std::string(name)});
        const auto *a = reinterpret_cast<const char *>(&full);
        const auto *b = reinterpret_cast<const char *>(&less);
        size_t differences = 0;
        for (size_t at = 0; at < sizeof full; at += sizeof(void *))
            differences += memcmp(a + at, b + at, sizeof(void *)) != 0;
        EXPECT_EQ(differences, 1u) << name;
    }
}
