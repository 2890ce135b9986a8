/* SPDX-License-Identifier: MIT
 *
 * Bursts of test frames, and the counts of those that came back.
 */
#include "transmit.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "service/scoped.h"
#include "test_ports.h"

constexpr useconds_t PORT_PAUSE_US = 50000; /* spreads out the frames that return from each port */

uint8_t *factory_fill_test_packet_buffer(uint32_t phy_id, uint32_t *length)
{
    const auto frame = static_cast<uint8_t *>(malloc(TEST_FRAME_LENGTH)); /* several times as fast as calloc */
    *length = frame == nullptr ? 0 : TEST_FRAME_LENGTH;
    if (frame == nullptr)
        return nullptr;
    const uint8_t source_and_type[] = {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, static_cast<uint8_t>(phy_id), 0xF0, 0xF0};
    memset(frame, 0, TEST_FRAME_LENGTH);
    memcpy(frame, TEST_FRAME_DESTINATION, sizeof(TEST_FRAME_DESTINATION));
    memcpy(frame + sizeof(TEST_FRAME_DESTINATION), source_and_type, sizeof(source_and_type));
    return frame;
}

int vexa_send_packet_use_cpsp(const port_packet_req *request)
{
    if (slot(&drv::send_packet) == nullptr) {
        log_error("vexa_drv_send_packet function is null.\n");
        return -1;
    }
    const pack_info info = {0, static_cast<uint16_t>(request->tx_selector), request->phy_id};
    for (uint32_t i = 0; i < request->frame_count; i++) {
        uint32_t length;
        const scoped_free frame(factory_fill_test_packet_buffer(request->phy_id, &length));
        if (frame.data == nullptr) {
            log_error("Fill packet buffer fail.\n");
            return -1;
        }
        if (call(&drv::send_packet, &info, frame.data, length) != 0) {
            log_error("Send packet buffer fail.\n");
            return -1;
        }
    }
    return 0;
}

int platform_send_packet(uint32_t, uint32_t *states, const uint32_t *ports, int count, uint32_t mode,
                         uint32_t tx_selector)
{
    int result = 0;
    for (int i = 0; i < count; i++) {
        if (states[i] == FACMSG_PORT_NO_LINK)
            continue;
        port_packet_req request = {};
        request.tx_selector = tx_selector;
        request.mode = mode;
        request.frame_count = TEST_FRAMES_PER_BURST;
        if (!get_phy_id(ports[i], &request, __func__)) {
            states[i] = FACMSG_PORT_TRANSMIT;
            result = -1;
            continue;
        }
        result = vexa_send_packet_use_cpsp(&request);
        states[i] = result == 0 ? FACMSG_PORT_OK : FACMSG_PORT_TRANSMIT;
        if (result != 0)
            log_error("port(%d) send packet fail.\n", static_cast<int>(ports[i]));
        usleep(PORT_PAUSE_US);
    }
    return result;
}

int platform_recv_packet(uint32_t, uint32_t *states, const uint32_t *ports, int count, uint32_t *counts)
{
    log_trace("Recv packet, port number:%d.\n", count);
    int result = 0;
    for (int i = 0; i < count; i++) {
        if (states[i] == FACMSG_PORT_NO_LINK)
            continue;
        port_packet_req request = {};
        if (!get_phy_id(ports[i], &request, __func__)) {
            states[i] = FACMSG_PORT_RECEIVE_COUNT;
            result = -1;
            continue;
        }
        result = vexa_get_recv_packet_number(request.phy_id, &request.count);
        counts[i] = request.count - counts[i];
        log_trace("port(%d) recv packet:%lu.\n", static_cast<int>(ports[i]), static_cast<unsigned long>(request.count));
    }
    return result;
}
