/* SPDX-License-Identifier: MIT
 *
 * The driver table at every pace: order of frames, and dropped slots.
 */
#include <chrono>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"

using namespace sim;

static std::mutex g_mutex;
static std::vector<uint32_t> g_frames; /* phy id and number of each, as one word */

static void deliver(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    const std::lock_guard guard(g_mutex);
    g_frames.push_back(info->phy_id << 16 | frame[length - 1]);
}

static size_t frames_at_cpu()
{
    const std::lock_guard guard(g_mutex);
    return g_frames.size();
}

/* Sends 60 numbered frames out of two cabled ports and a plugged one in turn and returns what came back, in order. */
static std::vector<uint32_t> frames_at(double pace)
{
    g_frames.clear();
    board b(
        parse_board("cables = [[1, 2]]\nplugs = 3\n[[ports]]\nports = \"1-3\"\ncopper_speeds = [\"1G\"]\n", "b.toml"));
    live_board live(b, pace, deliver);
    drive(live, false);
    const auto table = driver_table();
    uint8_t frame[64] = {0, 0, 0, 0, 0, 1};
    EXPECT_EQ(table.set_cpu_mac_addr(frame), 0);
    for (uint8_t number = 0; number < 60; number++) {
        const pack_info info = {0, 1, 0x101u + number % 3};
        frame[63] = number;
        EXPECT_EQ(table.send_packet(&info, frame, sizeof frame), 0);
        live.wait(5000);
    }
    live.wait(100000);
    for (int i = 0; i < 1000 && frames_at_cpu() < 60; i++) /* handing over may lag behind the wall clock */
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const std::lock_guard guard(g_mutex);
    return g_frames;
}

TEST(driver, delivers_the_same_at_every_pace)
{
    std::vector<uint32_t> expected;
    const uint32_t far_end[] = {0x102, 0x101, 0x103};
    for (uint32_t number = 0; number < 60; number++)
        expected.push_back(far_end[number % 3] << 16 | number);
    EXPECT_EQ(frames_at(0), expected);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(frames_at(2), expected);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200)) << "400 ms of board time";
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
