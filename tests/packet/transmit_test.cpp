/* SPDX-License-Identifier: MIT
 *
 * Sending bursts, reading counts and link states: parallel arrays of ports and state words.
 */
#include <cstdlib>
#include <gtest/gtest.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "packet/test_ports.h"
#include "packet/transmit.h"
#include "simulation.h"
#include "trace.h"

using words = std::vector<uint32_t>;

struct transmit : testing::Test {
    transmit()
    {
        for (const uint32_t port : ports)
            driver.add_port(port);
    }
    ~transmit() override
    {
        simulation::fail_allocation(0);
    }
    int send()
    {
        return platform_send_packet(5, states.data(), ports.data(), 3, 1, 0x20001);
    }
    int read()
    {
        return platform_recv_packet(5, states.data(), ports.data(), 3, counts.data());
    }
    int links()
    {
        return platform_get_port_link(5, rows, states.data(), ports.data(), 3);
    }

    fake_driver driver;
    words ports = {11, 12, 13}, states = {0, 0, 0}, counts = {0, 0, 0};
    port_status_row rows[3] = {};
};

TEST_F(transmit, test_frame_byte_for_byte)
{
    uint32_t length = 0;
    uint8_t *const frame = factory_fill_test_packet_buffer(0x123, &length);
    std::vector<uint8_t> expected = {0, 0, 0, 0, 0, 1, 0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0x23, 0xF0, 0xF0};
    expected.resize(128, 0);
    EXPECT_EQ(std::vector<uint8_t>(frame, frame + length), expected);
    free(frame);

    simulation::fail_allocation(1);
    EXPECT_EQ(factory_fill_test_packet_buffer(0x123, &length), nullptr);
    EXPECT_EQ(length, 0u);
}

TEST_F(transmit, sends_a_burst_out_of_each_port_with_link)
{
    states = {7, 1, 3};
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(states, (words{0, 1, 0}));
    EXPECT_EQ(trace_text(), "get_port_phyid(11,131073,1,0,50)\nsend_packet(0,1,267,128) x50\nwait_us(50000)\n"
                            "get_port_phyid(13,131073,1,0,50)\nsend_packet(0,1,269,128) x50\nwait_us(50000)\n");
    trace_clear();
    states = {1, 1, 1};
    counts = {4, 5, 6};
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(counts, (words{4, 5, 6}));
    EXPECT_EQ(trace_text(), "");
    const port_packet_req no_frames = {0x10B, 1, 1, 0, 0};
    EXPECT_EQ(vexa_send_packet_use_cpsp(&no_frames), 0);
    EXPECT_EQ(trace_text(), "");
}

TEST_F(transmit, reports_the_last_port_s_outcome)
{
    const std::string phy_id = "get port phyid", send_fail = "send packet";
    const struct {
        fake_failure failure;
        int result;
        words states;
        std::string failed, burst;
        int frames, waits;
    } cases[] = {
        {{"get_port_phyid", 11}, 0, {2, 0, 0}, phy_id, "", 100, 2},
        {{"get_port_phyid", 13}, -1, {0, 0, 2}, phy_id, "", 100, 2},
        {{"send_packet", 11, 3}, 0, {2, 0, 0}, send_fail, "Send packet buffer fail.\n", 103, 3},
        {{"send_packet", 13, 50, 9}, -1, {0, 0, 2}, send_fail, "Send packet buffer fail.\n", 150, 3},
        {{"out of memory", 12}, 0, {0, 2, 0}, send_fail, "Fill packet buffer fail.\n", 100, 3},
        {{"no slot", 13}, -1, {1, 1, 2}, send_fail, "vexa_drv_send_packet function is null.\n", 0, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.failure.slot);
        trace_clear();
        states = {0, 0, 0};
        driver.failures = {c.failure};
        simulation::fail_allocation(c.failure.slot == "out of memory" ? 51 : 0);
        if (c.failure.slot == "no slot") {
            facmsg_vexa_diag_drv.send_packet = nullptr;
            states = {1, 1, 0};
        }
        const log_capture log(1);
        EXPECT_EQ(send(), c.result);
        EXPECT_EQ(states, c.states);
        EXPECT_EQ(trace_count("send_packet"), c.frames);
        EXPECT_EQ(trace_count("wait_us(50000)"), c.waits);
        EXPECT_EQ(log.text_of("platform_send_packet"),
                  "port(" + std::to_string(c.failure.port) + ") " + c.failed + " fail.\n");
        EXPECT_EQ(log.text_of("vexa_send_packet_use_cpsp"), c.burst);
    }
}

TEST_F(transmit, reads_counts_as_differences)
{
    read();
    const words baseline = counts;
    send();
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(counts, (words{50, 50, 50}));
    counts = {baseline[0] + 51, 0, baseline[2] + 50};
    states = {0, 1, 0};
    const log_capture log(2);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(counts, (words{0xFFFFFFFF, 0, 0}));
    EXPECT_EQ(log.text_of("platform_recv_packet"),
              "Recv packet, port number:3.\nport(11) recv packet:" + std::to_string(baseline[0] + 50) +
                  ".\nport(13) recv packet:" + std::to_string(baseline[2] + 50) + ".\n");
}

TEST_F(transmit, cannot_read_the_count_of_a_port_without_phy_id)
{
    for (const uint32_t port : {11u, 12u}) {
        states = {0, 0, 1}; /* 12 is the last port with link */
        counts = {7, 7, 7};
        driver.failures = {{"get_port_phyid", port}};
        const log_capture log(1);
        EXPECT_EQ(read(), port == 12 ? -1 : 0);
        EXPECT_EQ(states, port == 12 ? (words{0, 3, 1}) : (words{3, 0, 1}));
        EXPECT_EQ(counts[port - 11], 7u);
        EXPECT_EQ(log.text(), "platform_recv_packet: port(" + std::to_string(port) + ") get port phyid fail.\n");
    }
}

TEST_F(transmit, reads_every_port_s_link)
{
    EXPECT_EQ(links(), 0);
    EXPECT_EQ(rows[1].host_word_5, driver.ports[12].status.host_word_5);
    driver.ports[12].down_polls = 1;
    driver.ports[13].status.link = 0x100;
    driver.failures = {{"get_status", 11, 1}};
    const log_capture log(1);
    EXPECT_EQ(links(), -1);
    EXPECT_EQ(states, (words{7, 1, 0}));
    EXPECT_EQ(log.text(), "platform_get_port_link: Get port(11) link status fail.\n");
    EXPECT_EQ(links(), 0);
    EXPECT_EQ(states, (words{0, 0, 0}));
    driver.failures = {{"get_status", 11}};
    EXPECT_EQ(links(), -1); /* whatever the ports behind it say */
}
