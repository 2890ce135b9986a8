/* SPDX-License-Identifier: MIT
 *
 * The receive hook. It runs on the host's threads, for every frame the CPU receives: no lock, no allocation, no log,
 * and for a port that has its row no barrier either.
 *
 * A row belongs to one port for good. Rows are claimed in order, each with one compare-and-swap of the port together
 * with its used flag. An open-addressed index leads from a port to its row; a row enters it right after it was claimed,
 * and until then is found by looking through the claims. When the last row has entered, everything empty in the index
 * leads to no_row, and a port without a row is known by that. docs/performance.md says why this needs no barrier.
 */
#include "fpga.h"

#include <atomic>
#include <cstring>

#include "facmsg_internal.h"

constexpr uint32_t COUNTED_PORTS = 256; /* for the life of the process; frames of further ports are not counted */
constexpr uint32_t INDEX_BITS = 11;     /* eight times the rows: nearly every search ends where it begins */
constexpr uint32_t INDEX_SIZE = 1u << INDEX_BITS;
constexpr uint64_t CLAIMED = uint64_t{1} << 32;

/* On a cache line of its own, so that threads counting different ports do not slow each other down. */
struct alignas(64) rx_port_counter {
    std::atomic<uint32_t> count;
    uint32_t port;             /* written once, before the row enters the index */
    std::atomic<bool> is_last; /* a search that has come here in vain ends: the port has no row and gets none */
};

static struct {
    std::atomic<rx_port_counter *> index[INDEX_SIZE]; /* each is set once: null, then a row or no_row */
    rx_port_counter rows[COUNTED_PORTS];
    std::atomic<uint64_t> claims[COUNTED_PORTS]; /* of the rows: 0, or CLAIMED and the port in the lower half */
    std::atomic<uint32_t> index_rows;            /* rows that have entered the index */
} vexa_recv_counters;
static rx_port_counter no_row = {0, 0, true};

/* Multiplicative hashing: phy ids in a row spread over the index without meeting. */
static uint32_t index_home(uint32_t port)
{
    return (port * 0x9E3779B1u) >> (32 - INDEX_BITS);
}

/* A row's port is read through the pointer that leads to the row. Processors order two such reads by themselves, so
 * there is no barrier; the thread sanitizer, which does not know that, is to check that the writes are in order. */
#ifdef __SANITIZE_THREAD__
constexpr std::memory_order THEN_THROUGH_IT = std::memory_order_acquire;
#else
constexpr std::memory_order THEN_THROUGH_IT = std::memory_order_relaxed;
#endif

/* Null for a port that is not in the index, no_row for one that never will be. */
static rx_port_counter *find_row(uint32_t port)
{
    for (uint32_t at = index_home(port);; at = (at + 1) % INDEX_SIZE) {
        rx_port_counter *const row = vexa_recv_counters.index[at].load(THEN_THROUGH_IT);
        if (row == nullptr || row == &no_row || row->port == port)
            return row;
    }
}

/* All rows have entered: what is empty stays so. */
static void close_index()
{
    rx_port_counter *before = nullptr;
    for (uint32_t i = 0; i <= INDEX_SIZE; i++) {
        auto &entry = vexa_recv_counters.index[i % INDEX_SIZE];
        rx_port_counter *row = entry.load(std::memory_order_relaxed);
        if (row == nullptr)
            entry.store(row = &no_row, std::memory_order_relaxed);
        if (row == &no_row && before != nullptr)
            before->is_last.store(true, std::memory_order_relaxed);
        before = row;
    }
}

static void enter_into_index(rx_port_counter *row, uint32_t port)
{
    row->port = port;
    rx_port_counter *empty;
    uint32_t at = index_home(port);
    while (empty = nullptr,
           !vexa_recv_counters.index[at].compare_exchange_strong(empty, row, std::memory_order_release))
        at = (at + 1) % INDEX_SIZE;
    if (vexa_recv_counters.index_rows.fetch_add(1, std::memory_order_acq_rel) == COUNTED_PORTS - 1)
        close_index();
}

/* The port's row if it is claimed, in the index or not yet. */
static rx_port_counter *find_claimed_row(uint32_t port)
{
    for (uint32_t i = 0; i < COUNTED_PORTS; i++)
        if (vexa_recv_counters.claims[i].load(std::memory_order_acquire) == (CLAIMED | port))
            return &vexa_recv_counters.rows[i];
    return nullptr;
}

/* The port's row if another thread is claiming it just now, else the next free one; null when all are taken. */
static rx_port_counter *claim_row(uint32_t port)
{
    for (uint32_t i = 0; i < COUNTED_PORTS; i++) {
        uint64_t owner = 0;
        rx_port_counter *const row = &vexa_recv_counters.rows[i];
        if (vexa_recv_counters.claims[i].compare_exchange_strong(owner, CLAIMED | port, std::memory_order_acq_rel)) {
            enter_into_index(row, port);
            return row;
        }
        if (owner == (CLAIMED | port))
            return row;
    }
    return nullptr;
}

static void add_frame(rx_port_counter *row)
{
    row->count.fetch_add(1, std::memory_order_relaxed);
}

/* For a port whose row is not where its search begins. */
[[gnu::noinline]] static void count_elsewhere(uint32_t port)
{
    rx_port_counter *row = find_row(port);
    if (row == nullptr)
        row = claim_row(port);
    if (row != nullptr && row != &no_row)
        add_frame(row);
}

static void vexa_recv_packet_count(uint32_t port)
{
    rx_port_counter *const row = vexa_recv_counters.index[index_home(port)].load(THEN_THROUGH_IT);
    if (row == nullptr) [[unlikely]]
        return count_elsewhere(port);
    if (row->port == port) [[likely]]
        return add_frame(row); /* of no_row, nobody reads the count */
    if (!row->is_last.load(std::memory_order_relaxed))
        count_elsewhere(port);
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

/* IPv4, IPv6, ARP, LLDP and VLAN tags: all that comes every day has a lower type than what counts. */
#ifdef __x86_64__ /* compares what lies in memory with a constant */
static bool is_everyday_frame(const uint8_t *frame)
{
    return frame[12] < 0x89;
}

static bool is_test_frame(const uint8_t *frame)
{
    uint16_t type;
    memcpy(&type, frame + 12, sizeof(type));
    return type == 0xF0F0;
}
#else /* ARM loads once, and has constants for these comparisons with a type that is widened with its sign */
static uint32_t wide_type(const uint8_t *frame)
{
    return static_cast<uint32_t>(int32_t{static_cast<int16_t>(frame[12] << 8 | frame[13])});
}

static bool is_everyday_frame(const uint8_t *frame)
{
    return wide_type(frame) < 0xFFFF8900;
}

static bool is_test_frame(const uint8_t *frame)
{
    return wide_type(frame) == 0xFFFFF0F0;
}
#endif

[[gnu::noinline]] static void take_rare_frame(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    if (frame[12] == 0x89 && frame[13] == 0x06) /* counted like a test frame */
        count_elsewhere(info->phy_id);
    else if (frame[12] == 0xFF && frame[13] == 0xF9)
        keep_fpga_reply(frame, length);
}

void vexa_recv_packet(const pack_info *info, const uint8_t *frame, uint32_t length)
{
    constexpr uint32_t ETHERNET_HEADER_LENGTH = 14;
    if (length < ETHERNET_HEADER_LENGTH || info == nullptr || is_everyday_frame(frame))
        return;
    if (is_test_frame(frame))
        vexa_recv_packet_count(info->phy_id);
    else
        take_rare_frame(info, frame, length);
}

int vexa_get_recv_packet_number(uint32_t phy_id, uint32_t *count)
{
    const rx_port_counter *row = find_row(phy_id);
    if (row == nullptr)
        row = find_claimed_row(phy_id);
    *count = row == nullptr || row == &no_row ? 0 : row->count.load(std::memory_order_relaxed);
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
