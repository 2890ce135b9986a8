/* SPDX-License-Identifier: MIT
 *
 * The driver table at every pace: order of frames, and dropped slots.
 */
#include <array>
#include <bit>
#include <chrono>
#include <semaphore>

#include <gtest/gtest.h>

#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"

using namespace sim;

static constexpr uint32_t FAR_END[] = {0x102, 0x101, 0x103}; /* phy ids, of two cabled ports and one with a plug */
static std::counting_semaphore g_at_cpu(0);
static std::vector<uint32_t> g_frames; /* phy id and number of each, as one word */

static void deliver(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    g_frames.push_back(info->phy_id << 16 | frame[length - 1]);
    g_at_cpu.release();
}

/* Sends 60 numbered frames out of all ports in turn, and expects all back in that order. */
static void expect_frames_at(double pace)
{
    board b(parse_board("cables=[[1,2]]\nplugs=3\n[[ports]]\nports=\"1-3\"\ncopper_speeds=[\"1G\"]\n", "b.toml"));
    live_board live(b, pace, deliver);
    drive(live, false);
    const auto table = driver_table();
    uint8_t frame[64] = {0, 0, 0, 0, 0, 1};
    EXPECT_EQ(table.set_cpu_mac_addr(frame), 0);
    std::vector<uint32_t> expected;
    for (uint8_t number = 0; number < 60; number++) {
        const pack_info info = {0, 1, 0x101u + number % 3};
        frame[63] = number;
        EXPECT_EQ(table.send_packet(&info, frame, sizeof frame), 0);
        expected.push_back(FAR_END[number % 3] << 16 | number);
        live.wait(5000);
    }
    live.wait(100000);
    for (size_t i = 0; i < expected.size(); i++) /* handing over may lag behind the wall clock */
        ASSERT_TRUE(g_at_cpu.try_acquire_for(std::chrono::seconds(5)));
    EXPECT_EQ(std::exchange(g_frames, {}), expected);
}

TEST(driver, delivers_the_same_at_every_pace)
{
    expect_frames_at(0);
    const auto start = std::chrono::steady_clock::now();
    expect_frames_at(0.5);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(800)) << "400 ms of board time";
}

TEST(driver, leaves_dropped_slots_empty)
{
    const auto empty = [](const std::vector<std::string> &names) {
        using pointers = std::array<uintptr_t, sizeof(vexa_diag_drv) / sizeof(uintptr_t)>;
        return std::ranges::count(std::bit_cast<pointers>(driver_table(names)), 0u);
    };
    for (const auto name : slot_names())
        EXPECT_EQ(empty({std::string(name)}), empty({}) + 1) << name;
}
