/* SPDX-License-Identifier: MIT
 *
 * The receive hook: what is counted for whom, and which FPGA reply is kept. Cases that need free rows in the table need
 * a fresh process.
 */
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "facmsg.h"

static std::vector<uint8_t> frame_of_type(uint16_t type, size_t length = 64, uint8_t filler = 0x5A)
{
    std::vector<uint8_t> frame(std::max<size_t>(length, 14), filler);
    frame[12] = static_cast<uint8_t>(type >> 8);
    frame[13] = static_cast<uint8_t>(type);
    frame.resize(length);
    frame.shrink_to_fit(); /* so that a read behind its end is seen */
    return frame;
}

static void receive(uint32_t phy_id, const std::vector<uint8_t> &frame)
{
    const pack_info info = {0, 0, phy_id};
    vexa_recv_packet(&info, frame.data(), static_cast<uint32_t>(frame.size()));
}

static uint32_t count_of(uint32_t phy_id)
{
    uint32_t count = 0xDEAD;
    EXPECT_EQ(vexa_get_recv_packet_number(phy_id, &count), 0);
    return count;
}

static const auto TEST_FRAME = frame_of_type(0xF0F0);

TEST(receive, counts_by_type_and_port)
{
    const struct {
        uint16_t type;
        size_t length;
        uint32_t counted;
    } cases[] = {
        {0xF0F0, 64, 1}, {0x8906, 64, 1}, {0xF0F0, 14, 1}, {0xF0F0, 1518, 1}, {0xF0F1, 64, 0}, {0xF1F0, 64, 0},
        {0x0689, 64, 0}, {0x8907, 64, 0}, {0xFFF9, 64, 0}, {0x0800, 64, 0},   {0xF0F0, 13, 0}, {0xF0F0, 1, 0},
    };
    for (const auto &c : cases) {
        const uint32_t before = count_of(7);
        receive(7, frame_of_type(c.type, c.length));
        EXPECT_EQ(count_of(7), before + c.counted) << std::hex << c.type << std::dec << " " << c.length;
    }
    EXPECT_EQ(count_of(8), 0u);
    const uint32_t before = count_of(7);
    const pack_info info = {0xF0F0, 0xFFFF, 7};
    vexa_recv_packet(nullptr, TEST_FRAME.data(), 64);
    vexa_recv_packet(&info, nullptr, 64);
    vexa_recv_packet(&info, TEST_FRAME.data(), 0);
    EXPECT_EQ(count_of(7), before);
}

TEST(receive, keeps_the_latest_fpga_reply_alone)
{
    for (const size_t length : {200u, 129u, 128u, 40u, 14u, 127u}) {
        const auto frame = frame_of_type(0xFFF9, length, static_cast<uint8_t>(length));
        receive(9, frame);
        std::array<uint8_t, 128> expected = {};
        memcpy(expected.data(), frame.data(), std::min<size_t>(length, 128));
        EXPECT_EQ(memcmp(get_fpga_data(), expected.data(), 128), 0) << length;
        receive(9, frame_of_type(0xFFF9, 13));
        receive(9, TEST_FRAME);
        EXPECT_EQ(memcmp(get_fpga_data(), expected.data(), 128), 0) << length;
    }
}

struct fresh_receive : testing::Test {
    void SetUp() override
    {
        if (testing::UnitTest::GetInstance()->test_to_run_count() > 1)
            GTEST_SKIP() << "needs a process of its own; ctest gives it one";
    }
};

/* The table as one would write it down: 256 rows, claimed in order. */
struct naive_counters {
    std::vector<std::pair<uint32_t, uint32_t>> rows; /* port and count */

    uint32_t *row(uint32_t port)
    {
        const auto found = std::ranges::find(rows, port, &std::pair<uint32_t, uint32_t>::first);
        return found == rows.end() ? nullptr : &found->second;
    }
    void receive(uint32_t port)
    {
        if (row(port) == nullptr && rows.size() < 256)
            rows.emplace_back(port, 0);
        if (uint32_t *const count = row(port))
            ++*count;
    }
    uint32_t count_of(uint32_t port)
    {
        return row(port) == nullptr ? 0 : *row(port);
    }
};

TEST_F(fresh_receive, counts_like_a_table_of_256_rows)
{
    std::mt19937 random(1);
    std::vector<uint32_t> ports = {0, 1, 0xFFFFFFFF};
    for (uint32_t i = 0; i < 320; i++)
        ports.push_back(i % 3 == 0 ? static_cast<uint32_t>(random()) : i % 3 == 1 ? 0x100 + i : i << 23);
    std::shuffle(ports.begin() + 1, ports.end(), random); /* port 0, like a free row, comes first */
    naive_counters model;
    for (int step = 0; step < 20000; step++) {
        const uint32_t port = ports[random() % (1 + static_cast<uint32_t>(step) / 50 % ports.size())];
        receive(port, TEST_FRAME);
        model.receive(port);
        const uint32_t other = ports[random() % ports.size()];
        ASSERT_EQ(count_of(other), model.count_of(other)) << other << " at step " << step;
    }
    for (const uint32_t port : ports)
        EXPECT_EQ(count_of(port), model.count_of(port)) << port;
    EXPECT_EQ(count_of(ports.back()), 0u) << "the table should have been full";
}

/* Threads that receive from the same new ports in the same moment. False when a frame was lost. */
static bool race_for_rows(uint32_t first_port, uint32_t ports, uint32_t frames)
{
    constexpr uint32_t THREADS = 3;
    std::atomic<uint32_t> arrived = 0;
    const auto run = [&] {
        for (uint32_t i = 0; i < ports; i++) {
            arrived++;
            while (arrived < (i + 1) * THREADS)
                std::this_thread::yield();
            for (uint32_t frame = 0; frame < frames; frame++)
                receive(first_port + i, TEST_FRAME);
        }
    };
    std::thread threads[] = {std::thread(run), std::thread(run), std::thread(run)};
    for (auto &thread : threads)
        thread.join();
    bool exact = true;
    for (uint32_t i = 0; i < ports; i++)
        exact = exact && count_of(first_port + i) == THREADS * frames;
    return exact;
}

TEST_F(fresh_receive, loses_nothing_when_threads_race_for_a_row)
{
    EXPECT_TRUE(race_for_rows(0x1000, 256, 2000));
    receive(0x2000, TEST_FRAME);
    EXPECT_EQ(count_of(0x2000), 0u) << "a port should have exactly one row";
}

/* The last row is claimed once a process, so each round has a process of its own; sanitizers make those slow to start.
 */
TEST_F(fresh_receive, loses_nothing_when_threads_race_for_the_last_row)
{
    for (uint32_t port = 0; port < 255; port++)
        receive(port, TEST_FRAME);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    for (int round = 0; round < 1000 && std::chrono::steady_clock::now() < end; round++) {
        const pid_t child = fork();
        if (child == 0)
            _exit(race_for_rows(0x1000, 1, 2) ? 0 : 1);
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << "round " << round;
    }
}
