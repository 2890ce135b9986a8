/* SPDX-License-Identifier: MIT
 *
 * The engine of the packet tests: order of driver calls and waits, retries, and the code that each fault leaves.
 */
#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include "fake_driver.h"
#include "log_capture.h"
#include "port_tests/port_test.h"
#include "simulation.h"
#include "trace.h"

using codes = std::vector<uint32_t>;

constexpr char RETRY[] = "Port packet test retry.\n";
constexpr char LINK_TIMEOUT[] = "Wait port link up(2) timeout.\n";
constexpr char NO_MEMORY[] = "Allocate memory fail.\n";

static std::string times(int count, const std::string &text)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

static std::string wrong_count(int port, int count)
{
    return "Port" + std::to_string(port) + ":Recv packet num(" + std::to_string(count) +
           ") is not equal to test number(500).\n";
}

struct port_test : testing::Test {
    port_test()
    {
        driver.add_port(3);
        driver.add_port(4);
    }
    ~port_test() override
    {
        simulation::fail_allocation(0);
    }
    uint32_t run(uint32_t any_speed, uint32_t speed)
    {
        trace_clear();
        results = {99, 99};
        return platform_port_test(6, any_speed, speed, 1, 0, results.data(), ports.data(), 2);
    }
    fake_driver driver;
    codes ports = {3, 4}, results;
};

/* From the link wait on: a first look at the links that finds them up, then an attempt that passes. */
static std::string passing_run(const std::string &mode)
{
    const std::string phy_ids = "get_port_phyid(3,0,0,0,0)\nget_port_phyid(4,0,0,0,0)\n";
    const auto burst = [&](const std::string &port, const std::string &phy_id) {
        return "get_port_phyid(" + port + "," + mode + "," + mode + ",0,50)\nsend_packet(0," + mode + "," + phy_id +
               ",128) x50\nwait_us(50000)\n";
    };
    return "get_status(6,3)\nget_status(6,4)\nwait_us(2000000)\n" + phy_ids +
           times(10, burst("3", "259") + burst("4", "260")) + phy_ids + "clear_cpu_mac_addr(00:00:00:00:00:01)\n";
}

TEST_F(port_test, forces_the_speed_then_waits_for_link_then_sends)
{
    driver.ports[4].status.host_word_0 = 77;
    driver.ports[3].down_polls = 3; /* one before the change, two after it */
    const std::string read_links = "get_status(6,3)\nget_status(6,4)\n";
    const log_capture log(2);
    EXPECT_EQ(run(0, 3), 0u);
    EXPECT_EQ(results, (codes{0, 0}));
    EXPECT_EQ(log.text_of("platform_port_test"),
              "Change port speed.\nWait for link up(2).\nPort is link up, start packet test.\n");
    EXPECT_EQ(trace_text(), "set_cpu_mac_addr(00:00:00:00:00:01)\n" + read_links +
                                "port_on_off(6,3,0)\nport_on_off(6,4,0)\n"
                                "set_status(6,3,160,3,0,1,165)\nset_status(6,4,77,3,0,1,165)\n"
                                "port_on_off(6,3,1)\nport_on_off(6,4,1)\nwait_us(2000000)\n" +
                                times(2, read_links + "wait_us(100000)\n") + passing_run("1"));
}

TEST_F(port_test, leaves_the_speed_alone_where_asked)
{
    const struct {
        uint32_t any_speed, speed;
        const char *mode;
    } cases[] = {{1, 3, "1"}, {0, 7, "2"}, {0, 8, "2"}, {0, 9, "2"}, {1, 8, "2"}};
    for (const auto &c : cases) {
        EXPECT_EQ(run(c.any_speed, c.speed), 0u);
        EXPECT_EQ(trace_text(), "set_cpu_mac_addr(00:00:00:00:00:01)\n" + passing_run(c.mode));
    }
    for (const uint32_t speed : {6u, 10u}) {
        EXPECT_EQ(run(0, speed), 0u);
        EXPECT_EQ(trace_count("set_status"), 2);
    }
}

using fault = std::function<void(fake_driver &)>;

static fault fails(const char *slot, uint32_t port = 0, int nth = 0)
{
    return [=](fake_driver &driver) { driver.failures.push_back({slot, port, nth}); };
}

static fault link_down(uint32_t port, int polls)
{
    return [=](fake_driver &driver) { driver.ports[port].down_polls = polls; };
}

/* Of each `period` frames, counted from 1, the nth comes back so many times. */
static fault comes_back(uint32_t port, int copies, int nth, int period = 500)
{
    return [=](fake_driver &driver) {
        driver.ports[port].copies = [=](int frame) { return frame % period == nth ? copies : 1; };
    };
}

static fault comes_late(uint32_t port, int waits)
{
    return [=](fake_driver &driver) { driver.ports[port].delay_waits = waits; };
}

static fault no_memory(int nth)
{
    return [=](fake_driver &) { simulation::fail_allocation(nth); };
}

static void no_switch(fake_driver &)
{
    facmsg_vexa_diag_drv.port_on_off = nullptr;
}

enum speed_mode { FORCED = 0, ANY = 1 };

TEST_F(port_test, leaves_a_code_for_every_fault)
{
    const std::string no_mac = "Set L2 MAC address table fail.\n", no_speed = "Set port(4) speed(3) duplex(1) fail.\n",
                      lost = wrong_count(4, 499), lost_3 = wrong_count(3, 499),
                      both = times(4, lost_3 + RETRY) + lost_3 + wrong_count(4, 501); /* port 4 at the end only */
    const struct {
        const char *name;
        std::vector<fault> faults;
        speed_mode speed;
        codes results;
        std::string log;
        int frames, reads_waited;
    } cases[] = {
        {"no CPU MAC entry", {fails("set_cpu_mac_addr")}, FORCED, {7, 7}, no_mac, 0, 0},
        {"no memory for rows", {no_memory(1)}, FORCED, {7, 7}, NO_MEMORY, 0, 0},
        {"no memory for counts", {no_memory(2)}, FORCED, {7, 7}, NO_MEMORY, 0, 0},
        {"no memory for the baseline", {no_memory(3)}, FORCED, {7, 7}, NO_MEMORY, 0, 0},
        {"no memory for a frame", {no_memory(4)}, ANY, {0, 0}, wrong_count(3, 450) + RETRY, 1950, 100},
        {"entry not removed", {fails("clear_cpu_mac_addr")}, FORCED, {0, 0}, "", 1000, 0},
        {"ports not switched off", {fails("port_on_off")}, FORCED, {0, 0}, "", 1000, 0},
        {"no port switch", {no_switch}, FORCED, {0, 0}, "", 1000, 0},
        {"speed refused", {fails("set_status", 4), link_down(3, 1)}, FORCED, {1, 6}, no_speed, 0, 0},
        {"no link on one", {link_down(3, NEVER)}, ANY, {1, 0}, LINK_TIMEOUT, 500, 0},
        {"no link", {link_down(3, NEVER), link_down(4, NEVER)}, FORCED, {1, 1}, LINK_TIMEOUT, 0, 0},
        {"link at the last poll", {link_down(3, 149)}, ANY, {0, 0}, "", 1000, 0},
        {"link after the last poll", {link_down(3, 150)}, ANY, {1, 0}, LINK_TIMEOUT, 500, 0},
        {"status unreadable", {fails("get_status", 3)}, ANY, {0, 0}, LINK_TIMEOUT, 1000, 0},
        {"frames late but in time", {comes_late(3, 102)}, ANY, {0, 0}, "", 1000, 100},
        {"a frame lost", {comes_back(4, 0, 0)}, ANY, {0, 3}, times(4, lost + RETRY) + lost, 5000, 500},
        {"a frame lost once", {comes_back(3, 0, 500, 9999)}, ANY, {0, 0}, lost_3 + RETRY, 2000, 100},
        {"both wrong", {comes_back(3, 0, 0), comes_back(4, 2, 1)}, ANY, {3, 3}, both, 5000, 500},
        {"transmit refused once", {fails("send_packet", 4, 60)}, ANY, {0, 0}, RETRY, 1160, 0},
        {"transmit refused", {fails("send_packet", 4)}, ANY, {0, 2}, times(4, RETRY), 255, 0},
        {"no phy id to send by", {fails("get_port_phyid", 4, 2)}, ANY, {0, 0}, RETRY, 1050, 0},
        {"no phy id to count by", {fails("get_port_phyid", 4, 12)}, ANY, {0, 0}, "", 1000, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        driver.failures.clear();
        facmsg_vexa_diag_drv = fake_table();
        for (const uint32_t port : ports)
            driver.add_port(port) = {.phy_id = 0x100 + port};
        for (const auto &f : c.faults)
            f(driver);
        const log_capture log(1);
        const bool failed = c.results != codes{0, 0} || c.log == LINK_TIMEOUT;
        EXPECT_EQ(run(c.speed, 3), failed ? 1u : 0u);
        EXPECT_EQ(results, c.results);
        EXPECT_EQ(trace_count("send_packet"), c.frames);
        EXPECT_EQ(log.text_of("platform_port_test"), c.log);
        EXPECT_EQ(trace_count("wait_us(10000)"), c.reads_waited);
        EXPECT_EQ(trace_count("set_cpu_mac_addr"), 1);
        EXPECT_EQ(trace_count("clear_cpu_mac_addr"), c.log == no_mac ? 0 : 1);
        EXPECT_EQ(trace_count("port_on_off(6,3,1)"), trace_count("port_on_off(6,3,0)"));
    }
}
