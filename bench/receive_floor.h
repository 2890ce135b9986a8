/* SPDX-License-Identifier: MIT
 *
 * The least that could do the receive hook's job: compare two bytes for a frame that does not count, add to an array
 * indexed by port for one that does.
 */
#ifndef BENCH_RECEIVE_FLOOR_H
#define BENCH_RECEIVE_FLOOR_H

#include <atomic>

#include "facmsg.h"

constexpr uint32_t PORTS = 256;
constexpr uint32_t FRAME_LENGTH = 128;

using hook = void (*)(const pack_info *info, const uint8_t *frame, uint32_t length);

struct alignas(64) padded_count {
    std::atomic<uint32_t> frames;
};
static padded_count direct_counts[PORTS];
static uint32_t other_frames;

[[gnu::noinline]] static void compare_two_bytes(const pack_info *, const uint8_t *frame, uint32_t)
{
    if (frame[12] == 0xF0 && frame[13] == 0xF0)
        other_frames++;
}

[[gnu::noinline]] static void count_directly(const pack_info *info, const uint8_t *frame, uint32_t)
{
    if (frame[12] == 0xF0 && frame[13] == 0xF0)
        direct_counts[info->phy_id % PORTS].frames.fetch_add(1, std::memory_order_relaxed);
}

#endif
