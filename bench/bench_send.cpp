/* SPDX-License-Identifier: MIT
 *
 * The senders, per frame, against a bare loop that calls the same driver function with a frame made once.
 */
#include <benchmark/benchmark.h>
#include <sys/time.h>

#include "packet/transmit.h"
#include "stress_tests/stress.h"

/* The library's clock: each reading is a minute after the last, so that a sender that waits for time sends one burst.
 */
extern "C" int gettimeofday(timeval *now, void *)
{
    static time_t second;
    *now = {second += 60, 0};
    return 0;
}

static constexpr uint32_t BURST = 10000;
static constexpr uint32_t PORT = 1;

[[gnu::noinline]] static int take_frame(const pack_info *info, const uint8_t *frame, uint32_t)
{
    benchmark::DoNotOptimize(info);
    benchmark::DoNotOptimize(frame);
    return 0;
}

static int give_phy_id(uint32_t port, void *record)
{
    *static_cast<uint32_t *>(record) = port;
    return 0;
}

static void fill_table()
{
    facmsg_vexa_diag_drv.send_packet = take_frame;
    facmsg_vexa_diag_drv.get_port_phyid = give_phy_id;
}

static void count_frames(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * BURST);
}

static void bare_loop(benchmark::State &state)
{
    fill_table();
    const pack_info info = {0, 0, PORT};
    const uint8_t frame[256] = {};
    int (*send_packet)(const pack_info *, const uint8_t *, uint32_t) = facmsg_vexa_diag_drv.send_packet;
    benchmark::DoNotOptimize(send_packet);
    for (auto _ : state)
        for (uint32_t i = 0; i < BURST; i++)
            if (send_packet(&info, frame, sizeof(frame)) != 0)
                state.SkipWithError("refused");
    count_frames(state);
}

static void serpentine(benchmark::State &state)
{
    fill_table();
    uint32_t sent = 0;
    for (auto _ : state)
        if (vexa_send_ess_serpentine_flow_use_cpsp(&PORT, 1, &sent) != 0 || sent != BURST)
            state.SkipWithError("not sent");
    count_frames(state);
}

/* Builds every frame anew, and frees it. */
static void test_frame_burst(benchmark::State &state)
{
    fill_table();
    const port_packet_req request = {PORT, 1, 1, 0, BURST};
    for (auto _ : state)
        if (vexa_send_packet_use_cpsp(&request) != 0)
            state.SkipWithError("not sent");
    count_frames(state);
}

BENCHMARK(bare_loop);
BENCHMARK(serpentine);
BENCHMARK(test_frame_burst);

BENCHMARK_MAIN();
