/* SPDX-License-Identifier: MIT
 *
 * Any frames into the receive hook. An input is a row of records: port (4 bytes), length (2 bytes), frame. A port's
 * count grows by one with a frame of a counted type, and by nothing else.
 */
#include <cstdlib>
#include <cstring>
#include <vector>

#include "facmsg.h"

static uint32_t count_of(uint32_t phy_id)
{
    uint32_t count = 0;
    vexa_get_recv_packet_number(phy_id, &count);
    return count;
}

static bool counted_type(const std::vector<uint8_t> &frame)
{
    return frame.size() >= 14 && ((frame[12] == 0xF0 && frame[13] == 0xF0) || (frame[12] == 0x89 && frame[13] == 0x06));
}

static void receive(const pack_info &info, const std::vector<uint8_t> &frame)
{
    const uint32_t before = count_of(info.phy_id);
    vexa_recv_packet(&info, frame.data(), static_cast<uint32_t>(frame.size()));
    const uint32_t growth = count_of(info.phy_id) - before;
    static int counted_ports;
    const bool has_row = before > 0 || counted_ports < 256;
    if (growth != (counted_type(frame) && has_row ? 1u : 0u))
        abort();
    counted_ports += before == 0 && growth == 1;
    if (frame.size() >= 14 && frame[12] == 0xFF && frame[13] == 0xF9 &&
        memcmp(get_fpga_data(), frame.data(), frame.size() < 128 ? frame.size() : 128) != 0)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    while (size >= 6) {
        pack_info info = {};
        uint16_t length;
        memcpy(&info.phy_id, bytes, 4);
        memcpy(&length, bytes + 4, 2);
        bytes += 6;
        size -= 6;
        const size_t share = length < size ? length : size;
        receive(info, {bytes, bytes + share});
        bytes += share;
        size -= share;
    }
    return 0;
}
