/* SPDX-License-Identifier: MIT
 *
 * Building stress frames byte by byte, and sending them.
 */
#include "stress.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sys/time.h>

#include "packet/test_ports.h"
#include "service/scoped.h"

constexpr uint8_t BROADCAST_MAC[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
constexpr uint32_t ADDRESSES_SIZE = 12;
constexpr uint32_t TAG_SIZE = 4;
constexpr uint32_t SHORTEST_FRAME = 64;

/* A zeroed frame with its addresses. */
static uint8_t *new_frame(const uint8_t (&destination)[6], uint32_t phy_id, uint32_t length, const char *op)
{
    const auto frame = static_cast<uint8_t *>(calloc(1, std::max(length, SHORTEST_FRAME)));
    if (frame == nullptr) {
        log_as(op, LOG_ERROR, "malloc pkt data faild.\n");
        return nullptr;
    }
    const uint8_t source[] = {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, static_cast<uint8_t>(phy_id)};
    memcpy(frame, destination, sizeof(destination));
    memcpy(frame + sizeof(destination), source, sizeof(source));
    return frame;
}

static void put_tag(uint8_t *to, uint32_t vlan_id)
{
    to[0] = 0x81;
    to[1] = 0x00;
    to[2] = static_cast<uint8_t>(vlan_id >> 8);
    to[3] = static_cast<uint8_t>(vlan_id);
}

static void fill(uint8_t *frame, uint32_t from, uint32_t length, const uint8_t *pattern)
{
    for (uint32_t at = from; at < length; at++)
        frame[at] = pattern[(at - from) % PATTERN_SIZE];
}

static void trace_frame(const uint8_t *f, uint32_t length, const char *op)
{
    log_as(op, LOG_TRACE,
           "len:%u, pkt:0x%x %x %x %x %x %x %x %x %x %x %x %x %x %x %x %x "
           "0x%x %x %x %x %x %x %x %x %x %x %x %x %x %x %x %x.\n",
           length, f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9], f[10], f[11], f[12], f[13], f[14], f[15],
           f[16], f[17], f[18], f[19], f[20], f[21], f[22], f[23], f[24], f[25], f[26], f[27], f[28], f[29], f[30],
           f[31]);
}

static bool length_allowed(uint32_t length)
{
    return length == 64 || length == 128 || length == 256 || length == 512 || length == 1518;
}

uint8_t *vexa_packet_vlan1(uint32_t phy_id, uint32_t length, uint16_t pattern)
{
    if (!length_allowed(length)) {
        log_error("pkt len:%u err.\n", length);
        return nullptr;
    }
    uint8_t *const frame = new_frame(BROADCAST_MAC, phy_id, length, __func__);
    if (frame == nullptr)
        return nullptr;
    put_tag(frame + ADDRESSES_SIZE, 1);
    if (length == SHORTEST_FRAME) {
        const auto high = static_cast<uint8_t>(pattern >> 8);
        const auto low = static_cast<uint8_t>(pattern);
        const uint8_t pairs[PATTERN_SIZE] = {high, low, high, low, high, low, high, low};
        fill(frame, ADDRESSES_SIZE + TAG_SIZE, length, pairs);
    }
    trace_frame(frame, length, __func__);
    return frame;
}

uint8_t *vexa_ess_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern, uint32_t vlan_id)
{
    uint8_t *const frame = new_frame(BROADCAST_MAC, phy_id, length, __func__);
    if (frame == nullptr)
        return nullptr;
    if (vlan_id != 0)
        put_tag(frame + ADDRESSES_SIZE, vlan_id);
    fill(frame, ADDRESSES_SIZE + (vlan_id != 0 ? TAG_SIZE : 0), length, pattern);
    trace_frame(frame, length, __func__);
    return frame;
}

uint8_t *vexa_ess_serpentine_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern)
{
    uint8_t *const frame = new_frame(SERPENTINE_MAC, phy_id, length, __func__);
    if (frame == nullptr)
        return nullptr;
    frame[ADDRESSES_SIZE] = 0xF0;
    frame[ADDRESSES_SIZE + 1] = 0xF0;
    fill(frame, ADDRESSES_SIZE + 2, length, pattern);
    trace_frame(frame, length, __func__);
    return frame;
}

/* ---- Senders ---- */

constexpr uint32_t SERPENTINE_LENGTH = 256;
constexpr uint32_t SERPENTINE_BURST = 10000;
constexpr time_t SERPENTINE_SECONDS = 30;
constexpr uint8_t SERPENTINE_PATTERN[PATTERN_SIZE] = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};

constexpr struct {
    uint32_t length;
    uint16_t pattern;
} PRESSURE_FRAMES[] = {
    {64, 0x00FF}, {64, 0x55AA}, {64, 0x0000}, {64, 0xFFFF}, {128, 0x0000}, {256, 0x0000}, {512, 0x0000}, {1518, 0x0000},
};

/* Every pattern at every length, lengths ascending. */
constexpr uint32_t ESS_LENGTHS[] = {64, 128, 512, 1518};
constexpr uint8_t ESS_PATTERNS[][PATTERN_SIZE] = {
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
    {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
    {0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA},
    {0x33, 0xCC, 0x33, 0xCC, 0x33, 0xCC, 0x33, 0xCC},
};

/* One frame's way out: what get_port_phyid is asked with, and what travels with the frame. */
struct outlet {
    pack_info info;
    bool has_phy_id;
};

/* Without its phy id the frame is still sent, with what the driver left in the record. */
static outlet open_outlet(uint32_t port, uint32_t tx_selector, const char *op)
{
    port_packet_req request = {};
    request.tx_selector = tx_selector;
    request.mode = 1;
    request.frame_count = 1;
    const bool has_phy_id = get_phy_id(port, &request, op);
    return {{0, static_cast<uint16_t>(request.tx_selector), request.phy_id}, has_phy_id};
}

/* Sends a frame just built, and frees it. */
static bool send_frame(const outlet &out, uint8_t *new_frame, uint32_t length, const char *op)
{
    const scoped_free frame(new_frame);
    if (frame.data == nullptr) {
        log_as(op, LOG_ERROR, "Fill packet buffer fail.\n");
        return false;
    }
    if (call(&drv::send_packet, &out.info, frame.data, length) != 0) {
        log_as(op, LOG_ERROR, "Send packet buffer fail.\n");
        return false;
    }
    return true;
}

/* The sixteen rows out of one port. False when sending failed; a phy id that could not be read only clears *phy_ids. */
static bool send_ess_frames(uint32_t port, uint32_t vlan_id, bool *phy_ids, const char *op)
{
    for (const uint32_t length : ESS_LENGTHS)
        for (const auto &pattern : ESS_PATTERNS) {
            const outlet out = open_outlet(port, vlan_id, op);
            *phy_ids = *phy_ids && out.has_phy_id;
            if (!send_frame(out, vexa_ess_packet(out.info.phy_id, length, pattern, vlan_id), length, op))
                return false;
        }
    return true;
}

/* The current second; -1 when the clock cannot be read. */
static time_t second_now(const char *op)
{
    timeval now;
    if (gettimeofday(&now, nullptr) == 0)
        return now.tv_sec;
    log_as(op, LOG_ERROR, "get time of day error.\n");
    return -1;
}

static bool send_burst(const outlet &out, const uint8_t *frame, const char *op)
{
    const auto send_packet = slot(&drv::send_packet);
    for (uint32_t i = 0; i < SERPENTINE_BURST; i++)
        if (send_packet == nullptr || send_packet(&out.info, frame, SERPENTINE_LENGTH) != 0) {
            log_as(op, LOG_ERROR, "Send packet buffer fail.\n");
            return false;
        }
    return true;
}

int vexa_send_packet_pressure_use_cpsp(uint32_t port)
{
    bool phy_ids = true;
    for (const auto &row : PRESSURE_FRAMES) {
        const outlet out = open_outlet(port, 1, __func__);
        phy_ids = phy_ids && out.has_phy_id;
        if (!send_frame(out, vexa_packet_vlan1(out.info.phy_id, row.length, row.pattern), row.length, __func__))
            return -1;
    }
    return phy_ids ? 0 : -1;
}

int vexa_send_ess_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count)
{
    bool phy_ids = true;
    for (uint32_t i = 0; i < count; i++)
        if (!send_ess_frames(ports[i], pair_vlan(i), &phy_ids, __func__))
            return -1;
    return phy_ids ? 0 : -1;
}

int vexa_send_ess_bc_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count)
{
    bool phy_ids = true;
    if (count > 0 && !send_ess_frames(ports[0], 1, &phy_ids, __func__))
        return -1;
    return phy_ids ? 0 : -1;
}

int vexa_send_ess_serpentine_flow_use_cpsp(const uint32_t *ports, uint32_t count, uint32_t *send_count)
{
    if (count == 0)
        return -1;
    const outlet out = open_outlet(ports[0], 0, __func__);
    const scoped_free frame(vexa_ess_serpentine_packet(out.info.phy_id, SERPENTINE_LENGTH, SERPENTINE_PATTERN));
    if (frame.data == nullptr) {
        log_error("Fill packet buffer fail.\n");
        return -1;
    }
    time_t now = second_now(__func__);
    if (now < 0)
        return -1;
    const time_t end = now + SERPENTINE_SECONDS;
    uint32_t frames = 0;
    while (now < end) {
        if (!send_burst(out, frame.data, __func__))
            return -1;
        frames += SERPENTINE_BURST;
        now = second_now(__func__);
        if (now < 0)
            return -1;
    }
    *send_count = frames;
    return out.has_phy_id ? 0 : -1;
}
