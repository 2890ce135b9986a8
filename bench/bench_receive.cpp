/* SPDX-License-Identifier: MIT
 *
 * The receive hook, against the least that could do its job: compare two bytes for a frame that does not count, add to
 * an array indexed by port for one that does. Each is called through a function pointer, as the host calls the hook.
 */
#include <benchmark/benchmark.h>

#include "receive_floor.h"

struct test_frame {
    uint8_t bytes[FRAME_LENGTH] = {};

    test_frame(uint8_t type_high, uint8_t type_low)
    {
        bytes[12] = type_high;
        bytes[13] = type_low;
    }
};
static const test_frame counted(0xF0, 0xF0);
static const test_frame ignored(0x08, 0x00);

/* Phy ids 0 to 255 get rows 0 to 255. */
static void claim_all_rows()
{
    for (uint32_t port = 0; port < PORTS; port++) {
        const pack_info info = {0, 0, port};
        vexa_recv_packet(&info, counted.bytes, FRAME_LENGTH);
    }
}

/* One frame from each of `ports` ports (a power of two) in turn, beginning with `first`. */
static void run(benchmark::State &state, hook receive, const test_frame &frame, uint32_t first, uint32_t ports)
{
    claim_all_rows();
    benchmark::DoNotOptimize(receive);
    uint32_t step = 0;
    for (auto _ : state) {
        const pack_info info = {0, 0, first + step};
        receive(&info, frame.bytes, FRAME_LENGTH);
        step = (step + 1) & (ports - 1);
    }
    state.SetItemsProcessed(state.iterations());
}

/* Each thread counts a port of its own. */
static void run_threads(benchmark::State &state)
{
    const auto port = static_cast<uint32_t>(state.thread_index());
    const pack_info info = {0, 0, port};
    for (auto _ : state)
        vexa_recv_packet(&info, counted.bytes, FRAME_LENGTH);
}

BENCHMARK_CAPTURE(run, ignored_baseline, compare_two_bytes, ignored, 0, 1);
BENCHMARK_CAPTURE(run, ignored_hook, vexa_recv_packet, ignored, 0, 1);
BENCHMARK_CAPTURE(run, counted_baseline, count_directly, counted, 0, PORTS);
BENCHMARK_CAPTURE(run, counted_hook, vexa_recv_packet, counted, 0, PORTS);
BENCHMARK_CAPTURE(run, row_0_hook, vexa_recv_packet, counted, 0, 1);
BENCHMARK_CAPTURE(run, row_255_hook, vexa_recv_packet, counted, 255, 1);
BENCHMARK_CAPTURE(run, unknown_baseline, compare_two_bytes, counted, 1000, PORTS);
BENCHMARK_CAPTURE(run, unknown_hook, vexa_recv_packet, counted, 1000, PORTS);
BENCHMARK(run_threads)->Threads(1)->Threads(2)->UseRealTime();

BENCHMARK_MAIN();
