/* SPDX-License-Identifier: MIT
 *
 * The receive hook. It runs on the host's threads, for every frame the CPU receives: no lock, no allocation, no log.
 *
 * A row belongs to one port for good. Rows are claimed in order, each with one compare-and-swap of the port together
 * with its used flag. An open-addressed index leads from a port to its row in constant time; a row enters it right
 * after it was claimed, and until then is found by looking through the rows.
 */
#include "fpga.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstring>

#include "facmsg_internal.h"

constexpr uint32_t COUNTED_PORTS = 256; /* for the life of the process; frames of further ports are not counted */
constexpr uint32_t INDEX_BITS = 9;      /* twice the rows: a search ends after a step or two */
constexpr uint32_t INDEX_SIZE = 1u << INDEX_BITS;
constexpr uint64_t ROW_USED = uint64_t{1} << 32;
constexpr uint32_t NO_ROW = COUNTED_PORTS;

/* On a cache line of its own, so that threads counting different ports do not slow each other down. */
struct alignas(64) port_count {
    std::atomic<uint32_t> frames;
};

static struct {
    std::atomic<uint64_t> index[INDEX_SIZE];   /* 0, or the row plus 1 in the upper half and its port in the lower */
    std::atomic<uint64_t> rows[COUNTED_PORTS]; /* 0, or ROW_USED and the port in the lower half */
    std::atomic<uint32_t> index_rows;          /* rows that have entered the index */
    port_count counts[COUNTED_PORTS];
} vexa_recv_counters;

/* Multiplicative hashing: phy ids in a row spread over the index without meeting. */
static uint32_t index_home(uint32_t port)
{
    return (port * 0x9E3779B1u) >> (32 - INDEX_BITS);
}

static uint32_t find_row(uint32_t port)
{
    for (uint32_t at = index_home(port);; at = (at + 1) % INDEX_SIZE) {
        const uint64_t entry = vexa_recv_counters.index[at].load(std::memory_order_acquire);
        if (entry == 0)
            return NO_ROW;
        if (static_cast<uint32_t>(entry) == port)
            return static_cast<uint32_t>(entry >> 32) - 1;
    }
}

static void enter_into_index(uint32_t port, uint32_t row)
{
    const uint64_t entry = uint64_t{row + 1} << 32 | port;
    for (uint32_t at = index_home(port);; at = (at + 1) % INDEX_SIZE) {
        uint64_t empty = 0;
        if (vexa_recv_counters.index[at].compare_exchange_strong(empty, entry, std::memory_order_acq_rel))
            break;
    }
    vexa_recv_counters.index_rows.fetch_add(1, std::memory_order_release);
}

/* The port's row if it is claimed but not yet in the index. */
static uint32_t find_claimed_row(uint32_t port)
{
    for (uint32_t row = 0; row < COUNTED_PORTS; row++)
        if (vexa_recv_counters.rows[row].load(std::memory_order_acquire) == (ROW_USED | port))
            return row;
    return NO_ROW;
}

/* The port's row if another thread is claiming it just now, else the next free one; NO_ROW when all are taken. */
[[gnu::noinline]] static uint32_t claim_row(uint32_t port)
{
    for (uint32_t row = 0; row < COUNTED_PORTS; row++) {
        uint64_t owner = 0;
        if (vexa_recv_counters.rows[row].compare_exchange_strong(owner, ROW_USED | port, std::memory_order_acq_rel)) {
            enter_into_index(port, row);
            return row;
        }
        if (owner == (ROW_USED | port))
            return row;
    }
    return NO_ROW;
}

static void vexa_recv_packet_count(uint32_t port)
{
    /* Asked before the search: a row that enters the index meanwhile may be this very port's. */
    const bool index_complete = vexa_recv_counters.index_rows.load(std::memory_order_acquire) == COUNTED_PORTS;
    uint32_t row = find_row(port);
    if (row == NO_ROW && !index_complete)
        row = claim_row(port);
    if (row != NO_ROW)
        vexa_recv_counters.counts[row].frames.fetch_add(1, std::memory_order_relaxed);
}

using fpga_reply = uint32_t[FPGA_REPLY_SIZE / sizeof(uint32_t)];

/* Written and read word by word, by the host's receiving threads and the server thread. */
static fpga_reply fpga_reply_buf;

static void store_fpga_reply(const fpga_reply &reply)
{
    for (size_t word = 0; word < std::size(reply); word++)
        std::atomic_ref(fpga_reply_buf[word]).store(reply[word], std::memory_order_relaxed);
}

[[gnu::noinline]] static void keep_fpga_reply(const uint8_t *frame, uint32_t length)
{
    fpga_reply reply = {};
    memcpy(reply, frame, length < FPGA_REPLY_SIZE ? length : FPGA_REPLY_SIZE);
    store_fpga_reply(reply);
}

/* The type field of a frame, as its two bytes lie in memory. */
static constexpr uint16_t frame_type(uint8_t first, uint8_t second)
{
    return std::bit_cast<uint16_t>(std::array{first, second});
}

void vexa_recv_packet(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    constexpr uint32_t ETHERNET_HEADER_LENGTH = 14;
    if (length < ETHERNET_HEADER_LENGTH || frame == nullptr)
        return;
    uint16_t type;
    memcpy(&type, frame + 12, sizeof(type));
    switch (type) {
    case frame_type(0xF0, 0xF0): /* test frame */
    case frame_type(0x89, 0x06): /* counted like one */
        if (info != nullptr)
            vexa_recv_packet_count(info->phy_id);
        break;
    case frame_type(0xFF, 0xF9):
        if (info != nullptr)
            keep_fpga_reply(frame, length);
        break;
    }
}

int vexa_get_recv_packet_number(uint32_t phy_id, uint32_t *count)
{
    uint32_t row = find_row(phy_id);
    if (row == NO_ROW)
        row = find_claimed_row(phy_id);
    *count = row == NO_ROW ? 0 : vexa_recv_counters.counts[row].frames.load(std::memory_order_relaxed);
    return 0;
}

uint8_t *get_fpga_data()
{
    return reinterpret_cast<uint8_t *>(fpga_reply_buf);
}

void clear_fpga_reply()
{
    store_fpga_reply({});
}

void copy_fpga_reply(uint8_t (&to)[FPGA_REPLY_SIZE])
{
    fpga_reply reply;
    for (size_t word = 0; word < std::size(reply); word++)
        reply[word] = std::atomic_ref(fpga_reply_buf[word]).load(std::memory_order_relaxed);
    memcpy(to, reply, sizeof(reply));
}
