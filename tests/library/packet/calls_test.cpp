/* SPDX-License-Identifier: MIT
 *
 * What hosts call directly and no request reaches.
 */
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>

#include "fake_driver.h"
#include "log_capture.h"
#include "packet/transmit.h"
#include "simulation.h"

/* Pair VLANs for hosts whose switch has no pair function. */
int vexa_port_pvid(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

struct calls : testing::Test {
    fake_driver driver;
};

TEST_F(calls, fpga_access_has_room_for_a_hundred_bytes)
{
    uint8_t reply[128] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xF9}, data[104] = {};
    std::iota(reply + 28, reply + 128, uint8_t{1});
    driver.answer = [&](const driver_call &call) {
        const pack_info info = {0, 0, call.port};
        if (call.slot == "send_packet")
            vexa_recv_packet(&info, reply, sizeof(reply));
        return 0;
    };
    EXPECT_EQ(vexa_fpga_buf_read(1, 0, data, 100, 0), 0);
    EXPECT_EQ(memcmp(data, reply + 28, 100) + data[100], 0);
    EXPECT_EQ(vexa_fpga_buf_read(1, 0, data, 101, 0), -1);
    EXPECT_EQ(vexa_fpga_buf_write(2, 0, data, 33, 0), -1);
}

TEST_F(calls, no_frames_are_no_failure)
{
    const port_packet_req none = {0x10B, 1, 1, 0, 0};
    EXPECT_EQ(vexa_send_packet_use_cpsp(&none), 0);
    EXPECT_EQ(trace_text(), "");
}

TEST_F(calls, pvids_of_pairs)
{
    constexpr uint32_t ports[] = {2, 4, 6};
    EXPECT_EQ(vexa_port_pvid(6, ports, 3, 1), 0);
    EXPECT_EQ(vexa_port_pvid(6, ports, 2, 0), 0);
    EXPECT_EQ(trace_text(), "vlan(6,2,100,1)\nvlan(6,6,102,1)\n"
                            "set_pvid(6,2,100)\nset_pvid(6,4,100)\nset_pvid(6,6,102) x2\n"
                            "set_pvid(6,2,1)\nset_pvid(6,4,1)\nvlan(6,2,100,0)\n");
    driver.answer = [](const driver_call &call) { return call.slot == "vlan" ? 4 : call.port == 4 ? 1 : 0; };
    for (const uint8_t enable : {uint8_t{0}, uint8_t{1}})
        EXPECT_EQ(vexa_port_pvid(6, ports, 2, enable), 5);
    empty_slot("vlan");
    empty_slot("set_pvid");
    const log_capture log(1);
    EXPECT_EQ(vexa_port_pvid(6, ports, 2, 1), -1);
    EXPECT_EQ(log.text(), "vexa_port_pvid: vexa_port_pvid no support(set_pvid:(nil), vlan:(nil)).\n");
}
