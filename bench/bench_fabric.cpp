/* SPDX-License-Identifier: MIT
 *
 * Frames that the simulated switch moves: broadcasts among looped ports. Between two they just circulate; among more
 * they multiply until every queue is full.
 */
#include <benchmark/benchmark.h>
#include <string>

#include "sim/board_file/board_file.h"
#include "sim/model/board.h"

static constexpr sim::time_us LINKS_UP_US = 1000000;
static constexpr sim::time_us SLICE_US = 100000;
static constexpr uint32_t FRAMES = 16;

static std::unique_ptr<sim::board> looped_board(uint32_t ports)
{
    auto board = std::make_unique<sim::board>(sim::parse_board(
        "[[ports]]\nports = \"1-" + std::to_string(ports) + "\"\ncopper_speeds = [\"1G\"]\n", "bench.toml"));
    for (uint32_t number = 1; number <= ports; number++)
        board->loop_phy(*board->find_port(number), true);
    board->clock.run_until(board->clock.now() + LINKS_UP_US);
    return board;
}

static uint64_t frames_moved(sim::board &board, uint32_t ports)
{
    uint64_t moved = 0;
    for (uint32_t number = 1; number <= ports; number++)
        moved += board.find_port(number)->counters.ex_pkts;
    return moved;
}

/* Broadcasts from port 1 in the default VLAN of that many ports. */
static void flood(benchmark::State &state)
{
    const auto ports = static_cast<uint32_t>(state.range(0));
    const auto board = looped_board(ports);
    for (uint32_t i = 0; i < FRAMES; i++)
        board->transmit(*board->find_port(1), std::vector<uint8_t>(64 + 96 * i, 0xFF));
    const auto before = frames_moved(*board, ports);
    for (auto _ : state)
        board->clock.run_until(board->clock.now() + SLICE_US);
    state.SetItemsProcessed(static_cast<int64_t>(frames_moved(*board, ports) - before));
}

BENCHMARK(flood)->Arg(2)->Arg(28)->Arg(52)->Arg(256)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
