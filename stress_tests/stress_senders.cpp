/* SPDX-License-Identifier: MIT
 *
 * The frame tables and the senders.
 */
#include "stress_senders.h"

#include <sys/time.h>

#include "facmsg_internal.h"
#include "service/scoped.h"
#include "stress_frames.h"
#include "stress_ports.h"

namespace
{

constexpr uint32_t FIRST_PAIR_VLAN = 100;
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
    bool phy_id_read;
};

/* Without its phy id the frame is still sent, with what the driver left in the record. */
outlet open_outlet(uint32_t port, uint32_t tx_selector, const char *op)
{
    port_packet_req request = {};
    request.tx_selector = tx_selector;
    request.mode = 1;
    request.frame_count = 1;
    const bool phy_id_read = call(&drv::get_port_phyid, port, &request) == 0;
    if (!phy_id_read)
        log_as(op, LOG_ERROR, "port(%d) get port phyid fail.\n", static_cast<int>(port));
    return {{0, static_cast<uint16_t>(request.tx_selector), request.phy_id}, phy_id_read};
}

/* Sends a frame just built, and frees it. */
bool send_frame(const outlet &out, uint8_t *new_frame, uint32_t length, const char *op)
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
bool send_ess_frames(uint32_t port, uint32_t vlan_id, bool *phy_ids, const char *op)
{
    for (const uint32_t length : ESS_LENGTHS)
        for (const auto &pattern : ESS_PATTERNS) {
            const outlet out = open_outlet(port, vlan_id, op);
            *phy_ids = *phy_ids && out.phy_id_read;
            if (!send_frame(out, vexa_ess_packet(out.info.phy_id, length, pattern, vlan_id), length, op))
                return false;
        }
    return true;
}

/* The current second; -1 when the clock cannot be read. */
time_t second_now(const char *op)
{
    timeval now;
    if (gettimeofday(&now, nullptr) == 0)
        return now.tv_sec;
    log_as(op, LOG_ERROR, "get time of day error.\n");
    return -1;
}

bool send_burst(const outlet &out, const uint8_t *frame, const char *op)
{
    const auto send_packet = slot(&drv::send_packet);
    for (uint32_t i = 0; i < SERPENTINE_BURST; i++)
        if (send_packet == nullptr || send_packet(&out.info, frame, SERPENTINE_LENGTH) != 0) {
            log_as(op, LOG_ERROR, "Send packet buffer fail.\n");
            return false;
        }
    return true;
}

} // namespace

int vexa_send_packet_pressure_use_cpsp(uint32_t port)
{
    bool phy_ids = true;
    for (const auto &row : PRESSURE_FRAMES) {
        const outlet out = open_outlet(port, 1, __func__);
        phy_ids = phy_ids && out.phy_id_read;
        if (!send_frame(out, vexa_packet_vlan1(out.info.phy_id, row.length, row.pattern), row.length, __func__))
            return -1;
    }
    return phy_ids ? 0 : -1;
}

int vexa_send_ess_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count)
{
    bool phy_ids = true;
    for (uint32_t i = 0; i < count; i++) {
        const uint32_t vlan_id = FIRST_PAIR_VLAN + i / 2 * 2;
        if (!send_ess_frames(ports[i], vlan_id, &phy_ids, __func__))
            return -1;
    }
    return phy_ids ? 0 : -1;
}

int vexa_send_ess_bc_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count)
{
    bool phy_ids = true;
    if (count > 0 && !send_ess_frames(ports[0], 1, &phy_ids, __func__))
        return -1;
    return phy_ids ? 0 : -1;
}

int vexa_send_ess_serpentine_flow_use_cpsp(const uint32_t *ports, uint32_t count, uint32_t *sent)
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
    *sent = frames;
    return out.phy_id_read ? 0 : -1;
}
