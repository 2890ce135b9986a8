/* SPDX-License-Identifier: MIT
 *
 * Building stress frames byte by byte.
 */
#include "stress_frames.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "facmsg_internal.h"

namespace
{

constexpr uint8_t BROADCAST_MAC[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
constexpr uint32_t ADDRESSES_SIZE = 12;
constexpr uint32_t TAG_SIZE = 4;
constexpr uint32_t SHORTEST_FRAME = 64;

/* A zeroed frame with its addresses. */
uint8_t *new_frame(const uint8_t (&destination)[6], uint32_t phy_id, uint32_t length, const char *op)
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

void put_tag(uint8_t *to, uint32_t vlan_id)
{
    to[0] = 0x81;
    to[1] = 0x00;
    to[2] = static_cast<uint8_t>(vlan_id >> 8);
    to[3] = static_cast<uint8_t>(vlan_id);
}

void fill(uint8_t *frame, uint32_t from, uint32_t length, const uint8_t *pattern)
{
    for (uint32_t at = from; at < length; at++)
        frame[at] = pattern[(at - from) % PATTERN_SIZE];
}

void trace_frame(const uint8_t *f, uint32_t length, const char *op)
{
    log_as(op, LOG_TRACE,
           "len:%u, pkt:0x%x %x %x %x %x %x %x %x %x %x %x %x %x %x %x %x "
           "0x%x %x %x %x %x %x %x %x %x %x %x %x %x %x %x %x.\n",
           length, f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9], f[10], f[11], f[12], f[13], f[14], f[15],
           f[16], f[17], f[18], f[19], f[20], f[21], f[22], f[23], f[24], f[25], f[26], f[27], f[28], f[29], f[30],
           f[31]);
}

bool accepted_length(uint32_t length)
{
    return length == 64 || length == 128 || length == 256 || length == 512 || length == 1518;
}

} // namespace

uint8_t *vexa_packet_vlan1(uint32_t phy_id, uint32_t length, uint16_t pattern)
{
    if (!accepted_length(length)) {
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
