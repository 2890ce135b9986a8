/* SPDX-License-Identifier: MIT
 *
 * The receive hook's table of ports. Each case needs a free one, hence a process of its own, which ctest gives it.
 */
#include <algorithm>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "facmsg.h"

static const uint8_t TEST_FRAME[64] = {0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0xF0, 0xF0};

static void receive(uint32_t phy_id)
{
    const pack_info info = {0, 0, phy_id};
    vexa_recv_packet(&info, TEST_FRAME, sizeof(TEST_FRAME));
}

static uint32_t count_of(uint32_t phy_id)
{
    uint32_t count = 0xDEAD;
    EXPECT_EQ(vexa_get_recv_packet_number(phy_id, &count), 0);
    return count;
}

TEST(receive, counts_like_a_table_of_256_rows)
{
    const pack_info free_row = {0xF0F0, 0xFFFF, 0};
    vexa_recv_packet(nullptr, TEST_FRAME, 64); /* what is not there does not count */
    vexa_recv_packet(nullptr, nullptr, 64);
    vexa_recv_packet(&free_row, TEST_FRAME, 0);
    std::mt19937 random(1);
    std::vector<uint32_t> ports = {0, 1, 0xFFFFFFFF};
    for (uint32_t i = 0; i < 320; i++)
        ports.push_back(i % 3 == 0 ? static_cast<uint32_t>(random()) : i % 3 == 1 ? 0x100 + i : i << 23);
    std::shuffle(ports.begin() + 1, ports.end(), random); /* port 0, like a free row, comes first */
    std::map<uint32_t, uint32_t> model;                   /* the table as one would write it down */
    for (int step = 0; step < 20000; step++) {
        const uint32_t port = ports[random() % (1 + static_cast<uint32_t>(step) / 50 % ports.size())];
        receive(port);
        if (model.size() < 256 || model.contains(port))
            model[port]++;
        const uint32_t other = ports[random() % ports.size()];
        ASSERT_EQ(count_of(other), model.contains(other) ? model[other] : 0) << other << " at step " << step;
    }
    EXPECT_EQ(count_of(ports.back()), 0u) << "the table should have been full";
}

/* Threads that receive from the same new ports in the same moment, until the table is full. False when a frame was lost
 * or a port got two rows, so that there was none for the last. */
static bool race_for_rows(uint32_t frames)
{
    constexpr uint32_t THREADS = 8, PORTS = 256;
    std::atomic<uint32_t> arrived = 0;
    const auto run = [&] {
        for (uint32_t i = 0; i < PORTS; i++) {
            arrived++;
            while (arrived < (i + 1) * THREADS)
                std::this_thread::yield();
            for (uint32_t frame = 0; frame < frames; frame++)
                receive(0x1000 + i);
        }
    };
    std::vector<std::thread> threads;
    for (uint32_t i = 0; i < THREADS; i++)
        threads.emplace_back(run);
    for (auto &thread : threads)
        thread.join();
    receive(0x2000);
    receive(0); /* as the port of a row that nobody has reads */
    bool exact = count_of(0x2000) == 0 && count_of(0) == 0;
    for (uint32_t i = 0; i < PORTS; i++)
        exact = exact && count_of(0x1000 + i) == THREADS * frames;
    return exact;
}

/* A row is claimed once a process, so each round has one of its own; sanitizers make those slow to start. */
TEST(receive, loses_nothing_when_threads_race_for_a_row)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(4);
    for (int round = 0; round < 1000 && std::chrono::steady_clock::now() < end; round++) {
        const pid_t child = fork();
        if (child == 0)
            _exit(race_for_rows(round == 0 ? 2000 : 2) ? 0 : 1);
        int status = -1;
        waitpid(child, &status, 0);
        ASSERT_EQ(status, 0) << "round " << round;
    }
}
