/* SPDX-License-Identifier: MIT
 *
 * Sending bursts, reading counts and link states: parallel arrays of ports and state words.
 */
#include <cstdlib>
#include <gtest/gtest.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "packet/port_link.h"
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
    int links(int count = 3)
    {
        return platform_get_port_link(5, rows, states.data(), ports.data(), count);
    }

    fake_driver driver;
    words ports = {11, 12, 13}, states = {0, 0, 0}, counts = {0, 0, 0};
    port_status_row rows[3] = {};
};

TEST_F(transmit, test_frame_byte_for_byte)
{
    uint32_t length = 0;
    uint8_t *const frame = factory_fill_test_packet_buffer(0x123, &length);
    ASSERT_EQ(length, 128u);
    const uint8_t head[] = {0, 0, 0, 0, 0, 1, 0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0x23, 0xF0, 0xF0};
    std::vector<uint8_t> expected(std::begin(head), std::end(head));
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
    ASSERT_EQ(driver.kept_frames.size(), 2u);
    EXPECT_EQ(driver.kept_frames[1][11], 0x0D);
}

TEST_F(transmit, does_nothing_on_ports_without_link)
{
    states = {1, 1, 1};
    counts = {4, 5, 6};
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(counts, (words{4, 5, 6}));
    EXPECT_EQ(states, (words{1, 1, 1}));
    EXPECT_EQ(trace_text(), "");
}

TEST_F(transmit, reports_the_last_port_s_outcome)
{
    const std::string no_phy = "platform_send_packet: port(%) get port phyid fail.\n",
                      refused = "vexa_send_packet_use_cpsp: Send packet buffer fail.\n"
                                "platform_send_packet: port(%) send packet fail.\n";
    const struct {
        const char *name;
        fake_failure failure;
        int result;
        words states;
        std::string log;
        int frames, waits;
    } cases[] = {
        {"no phy id, first", {"get_port_phyid", 11}, 0, {2, 0, 0}, no_phy, 100, 2},
        {"no phy id, last", {"get_port_phyid", 13}, -1, {0, 0, 2}, no_phy, 100, 2},
        {"transmit, first", {"send_packet", 11, 3}, 0, {2, 0, 0}, refused, 103, 3},
        {"transmit, last", {"send_packet", 13, 50, 9}, -1, {0, 0, 2}, refused, 150, 3},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        trace_clear();
        driver.failures = {c.failure};
        const log_capture log(1);
        EXPECT_EQ(send(), c.result);
        EXPECT_EQ(states, c.states);
        EXPECT_EQ(trace_count("send_packet"), c.frames);
        EXPECT_EQ(trace_count("wait_us(50000)"), c.waits);
        std::string expected = c.log;
        if (const size_t at = expected.find('%'); at != std::string::npos)
            expected.replace(at, 1, std::to_string(c.failure.port));
        EXPECT_EQ(log.text(), expected);
    }
}

TEST_F(transmit, without_a_slot_or_memory_fails)
{
    const log_capture log(1);
    facmsg_vexa_diag_drv.send_packet = nullptr;
    states = {1, 0, 1};
    EXPECT_EQ(send(), -1);
    EXPECT_EQ(states, (words{1, 2, 1}));
    facmsg_vexa_diag_drv = fake_table();
    simulation::fail_allocation(3);
    EXPECT_EQ(send(), -1);
    EXPECT_EQ(states, (words{1, 2, 1}));
    EXPECT_EQ(trace_count("send_packet"), 2);
    EXPECT_EQ(log.text(), "vexa_send_packet_use_cpsp: vexa_drv_send_packet function is null.\n"
                          "platform_send_packet: port(12) send packet fail.\n"
                          "vexa_send_packet_use_cpsp: Fill packet buffer fail.\n"
                          "platform_send_packet: port(12) send packet fail.\n");
}

TEST_F(transmit, of_no_frames_succeeds)
{
    port_packet_req request = {0x10B, 1, 1, 0, 0};
    EXPECT_EQ(vexa_send_packet_use_cpsp(&request), 0);
    request.frame_count = 3;
    EXPECT_EQ(vexa_send_packet_use_cpsp(&request), 0);
    EXPECT_EQ(trace_text(), "send_packet(0,1,267,128) x3\n");
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
    EXPECT_EQ(log.text(), "platform_recv_packet: Recv packet, port number:3.\n"
                          "platform_recv_packet: port(11) recv packet:" +
                              std::to_string(baseline[0] + 50) + ".\nplatform_recv_packet: port(13) recv packet:" +
                              std::to_string(baseline[2] + 50) + ".\n");
}

TEST_F(transmit, cannot_read_the_count_of_a_port_without_phy_id)
{
    const struct {
        uint32_t port;
        int result;
        words states, counts;
    } cases[] = {{11, 0, {3, 0, 1}, {7, 0, 7}}, {12, -1, {0, 3, 1}, {0, 7, 7}}};
    for (const auto &c : cases) {
        states = {0, 0, 1};
        counts = {0, 0, 0};
        read();
        counts[c.port - 11] = counts[2] = 7;
        driver.failures = {{"get_port_phyid", c.port}};
        const log_capture log(1);
        EXPECT_EQ(read(), c.result);
        EXPECT_EQ(states, c.states);
        EXPECT_EQ(counts, c.counts);
        EXPECT_EQ(log.text(), "platform_recv_packet: port(" + std::to_string(c.port) + ") get port phyid fail.\n");
        driver.failures.clear();
    }
}

TEST_F(transmit, reads_every_port_s_link)
{
    EXPECT_EQ(links(), 0);
    EXPECT_EQ(rows[1].host_word_5, driver.ports[12].status.host_word_5);
    driver.ports[12].down_polls = 1;
    driver.ports[13].status.link = 0x100;
    driver.failures = {{"get_status", 11}};
    const log_capture log(1);
    EXPECT_EQ(links(), -1);
    EXPECT_EQ(states, (words{7, 1, 0}));
    EXPECT_EQ(links(1), -1);
    EXPECT_EQ(log.text(), "platform_get_port_link: Get port(11) link status fail.\n"
                          "platform_get_port_link: Get port(11) link status fail.\n");
    driver.failures.clear();
    driver.ports[12].down_polls = 1;
    EXPECT_EQ(links(), -1);
    EXPECT_EQ(states, (words{0, 1, 0}));
    EXPECT_EQ(links(), 0);
    EXPECT_EQ(states, (words{0, 0, 0}));
}

TEST_F(transmit, sets_states)
{
    platform_set_port_status(states.data(), 2, 7);
    platform_set_port_status(states.data(), 0, 8);
    platform_set_port_status(states.data(), -1, 9);
    EXPECT_EQ(states, (words{7, 7, 0}));
}
