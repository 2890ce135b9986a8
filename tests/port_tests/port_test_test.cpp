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

constexpr char MAC[] = "(00:00:00:00:00:01)\n";
constexpr char RETRY[] = "platform_port_test: Port packet test retry.\n";
constexpr char LINK_TIMEOUT[] = "platform_port_test: Wait port link up(2) timeout.\n";

static std::string times(int count, const std::string &text)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

static std::string wrong_count(int port, int count)
{
    return "platform_port_test: Port" + std::to_string(port) + ":Recv packet num(" + std::to_string(count) +
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

static std::string read_phy_ids()
{
    return "get_port_phyid(3,0,0,0,0)\nget_port_phyid(4,0,0,0,0)\n";
}

/* Ten bursts out of ports 3 and 4. */
static std::string ten_bursts(const std::string &mode)
{
    const auto burst = [&](const std::string &port, const std::string &phy_id) {
        return "get_port_phyid(" + port + "," + mode + "," + mode + ",0,50)\nsend_packet(0," + mode + "," + phy_id +
               ",128) x50\nwait_us(50000)\n";
    };
    return times(10, burst("3", "259") + burst("4", "260"));
}

static const std::string READ_LINKS = "get_status(6,3)\nget_status(6,4)\n";
static const std::string ATTEMPT = read_phy_ids() + ten_bursts("1") + read_phy_ids();

TEST_F(port_test, forces_the_speed_then_waits_for_link_then_sends)
{
    driver.ports[4].status.host_word_0 = 77;
    driver.ports[3].down_polls = 3; /* one before the change, two after it */
    const uint64_t start = simulation::now_us();
    const log_capture log(1);
    EXPECT_EQ(run(0, 3), 0u);
    EXPECT_EQ(results, (codes{0, 0}));
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(trace_text(), std::string("set_cpu_mac_addr") + MAC + READ_LINKS +
                                "port_on_off(6,3,0)\nport_on_off(6,4,0)\n"
                                "set_status(6,3,160,3,0,1,165)\nset_status(6,4,77,3,0,1,165)\n"
                                "port_on_off(6,3,1)\nport_on_off(6,4,1)\nwait_us(2000000)\n" +
                                times(2, READ_LINKS + "wait_us(100000)\n") + READ_LINKS + "wait_us(2000000)\n" +
                                ATTEMPT + "clear_cpu_mac_addr" + MAC);
    EXPECT_EQ(simulation::now_us() - start, 2000000u + 200000 + 2000000 + 20 * 50000);
}

TEST_F(port_test, leaves_the_speed_alone_where_asked)
{
    const struct {
        uint32_t any_speed, speed;
        const char *mode;
    } cases[] = {{1, 3, "1"}, {0, 7, "2"}, {0, 8, "2"}, {0, 9, "2"}, {1, 8, "2"}};
    for (const auto &c : cases) {
        EXPECT_EQ(run(c.any_speed, c.speed), 0u);
        EXPECT_EQ(trace_text(), std::string("set_cpu_mac_addr") + MAC + READ_LINKS + "wait_us(2000000)\n" +
                                    read_phy_ids() + ten_bursts(c.mode) + read_phy_ids() + "clear_cpu_mac_addr" + MAC);
    }
    for (const uint32_t speed : {6u, 10u}) {
        EXPECT_EQ(run(0, speed), 0u);
        EXPECT_EQ(trace_count("set_status"), 2);
    }
}

TEST_F(port_test, sends_again_after_a_hundred_reads_of_a_wrong_count)
{
    driver.ports[3].copies = [](int nth) { return nth == 500 ? 0 : 1; };
    const log_capture log(1);
    EXPECT_EQ(run(1, 3), 0u);
    EXPECT_EQ(results, (codes{0, 0}));
    EXPECT_EQ(log.text(), wrong_count(3, 499) + RETRY);
    EXPECT_EQ(trace_text(), std::string("set_cpu_mac_addr") + MAC + READ_LINKS + "wait_us(2000000)\n" + ATTEMPT +
                                times(100, "wait_us(10000)\n" + read_phy_ids()) + ATTEMPT + "clear_cpu_mac_addr" + MAC);
}

TEST_F(port_test, takes_frames_that_come_late_but_in_time)
{
    driver.ports[3].delay_waits = 100 + 1; /* the wait behind port 4's last burst, and all the reads */
    driver.ports[3].delay_waits += 1;      /* and the one behind its own */
    const log_capture log(1);
    EXPECT_EQ(run(1, 3), 0u);
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(trace_count("wait_us(10000)"), 100);
    driver.ports[3].delay_waits += 1;
    run(1, 3);
    EXPECT_NE(log.text(), "");
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

static fault comes_back(uint32_t port, int copies, int of_each_500)
{
    return [=](fake_driver &driver) {
        driver.ports[port].copies = [=](int nth) { return nth % 500 == of_each_500 ? copies : 1; };
    };
}

enum speed_mode { FORCED = 0, ANY = 1 };

TEST_F(port_test, leaves_a_code_for_every_fault)
{
    const std::string op = "platform_port_test: ", no_mac = op + "Set L2 MAC address table fail.\n",
                      no_speed = op + "Set port(4) speed(3) duplex(1) fail.\n",
                      no_status = times(150, "platform_get_port_link: Get port(3) link status fail.\n"),
                      no_phy = "platform_send_packet: port(4) get port phyid fail.\n",
                      no_count = "platform_recv_packet: port(4) get port phyid fail.\n",
                      refused = "vexa_send_packet_use_cpsp: Send packet buffer fail.\n"
                                "platform_send_packet: port(4) send packet fail.\n",
                      lost = wrong_count(4, 499), lost_3 = wrong_count(3, 499), doubled = wrong_count(4, 501);
    const struct {
        const char *name;
        std::vector<fault> faults;
        speed_mode speed;
        codes results;
        std::string log;
        int frames, reads_waited;
    } cases[] = {
        {"no CPU MAC entry", {fails("set_cpu_mac_addr")}, FORCED, {7, 7}, no_mac, 0, 0},
        {"entry not removed", {fails("clear_cpu_mac_addr")}, FORCED, {0, 0}, "", 1000, 0},
        {"ports not switched off", {fails("port_on_off")}, FORCED, {0, 0}, "", 1000, 0},
        {"speed refused", {fails("set_status", 4), link_down(3, 1)}, FORCED, {1, 6}, no_speed, 0, 0},
        {"no link on one", {link_down(3, NEVER)}, ANY, {1, 0}, LINK_TIMEOUT, 500, 0},
        {"no link", {link_down(3, NEVER), link_down(4, NEVER)}, FORCED, {1, 1}, LINK_TIMEOUT, 0, 0},
        {"link at the last poll", {link_down(3, 149)}, ANY, {0, 0}, "", 1000, 0},
        {"link after the last poll", {link_down(3, 150)}, ANY, {1, 0}, LINK_TIMEOUT, 500, 0},
        {"status unreadable", {fails("get_status", 3)}, ANY, {0, 0}, no_status + LINK_TIMEOUT, 1000, 0},
        {"a frame lost", {comes_back(4, 0, 0)}, ANY, {0, 3}, times(4, lost + RETRY) + lost, 5000, 500},
        {"both wrong, the second told of at the end only",
         {comes_back(3, 0, 0), comes_back(4, 2, 1)},
         ANY,
         {3, 3},
         times(4, lost_3 + RETRY) + lost_3 + doubled,
         5000,
         500},
        {"transmit refused once", {fails("send_packet", 4, 60)}, ANY, {0, 0}, refused + RETRY, 1160, 0},
        {"transmit refused", {fails("send_packet", 4)}, ANY, {0, 2}, times(4, refused + RETRY) + refused, 255, 0},
        {"no phy id to send by", {fails("get_port_phyid", 4, 2)}, ANY, {0, 0}, no_phy + RETRY, 1050, 0},
        {"no phy id to count by", {fails("get_port_phyid", 4, 12)}, ANY, {0, 0}, no_count, 1000, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        driver.failures.clear();
        for (const uint32_t port : ports)
            driver.add_port(port) = {.phy_id = 0x100 + port};
        for (const auto &f : c.faults)
            f(driver);
        const log_capture log(1);
        const bool failed = c.results != codes{0, 0} || c.log.ends_with(LINK_TIMEOUT);
        EXPECT_EQ(run(c.speed, 3), failed ? 1u : 0u);
        EXPECT_EQ(results, c.results);
        EXPECT_EQ(trace_count("send_packet"), c.frames);
        EXPECT_EQ(log.text(), c.log);
        EXPECT_EQ(trace_count("wait_us(10000)"), c.reads_waited);
        EXPECT_EQ(trace_count("set_cpu_mac_addr"), 1);
        EXPECT_EQ(trace_count("clear_cpu_mac_addr"), c.log == no_mac ? 0 : 1);
        EXPECT_EQ(trace_count("port_on_off(6,3,1)"), trace_count("port_on_off(6,3,0)"));
    }
}

TEST_F(port_test, polls_the_link_for_fifteen_seconds)
{
    driver.ports[4].down_polls = NEVER;
    const uint64_t start = simulation::now_us();
    run(1, 3);
    EXPECT_EQ(trace_count("get_status(6,4)"), 150);
    EXPECT_EQ(trace_count("wait_us(100000)"), 150);
    EXPECT_EQ(simulation::now_us() - start, 150u * 100000 + 2000000 + 10 * 50000);
}

TEST_F(port_test, switches_ports_back_on_after_a_refused_speed)
{
    driver.failures = {{"set_status", 3}};
    EXPECT_EQ(run(0, 3), 1u);
    EXPECT_EQ(results, (codes{6, 0}));
    EXPECT_EQ(trace_text(), std::string("set_cpu_mac_addr") + MAC + READ_LINKS +
                                "port_on_off(6,3,0)\nport_on_off(6,4,0)\n"
                                "set_status(6,3,160,3,0,1,165)\nset_status(6,4,160,3,0,1,165)\n"
                                "port_on_off(6,3,1)\nport_on_off(6,4,1)\nwait_us(2000000)\nclear_cpu_mac_addr" +
                                MAC);
}

TEST_F(port_test, runs_without_the_optional_port_switch)
{
    facmsg_vexa_diag_drv.port_on_off = nullptr;
    EXPECT_EQ(run(0, 3), 0u);
    EXPECT_EQ(trace_count("port_on_off"), 0);
    EXPECT_EQ(trace_count("set_status"), 2);
}

TEST_F(port_test, survives_the_failure_of_each_allocation)
{
    for (int nth = 1; nth <= 3; nth++) {
        const log_capture log(1);
        simulation::fail_allocation(nth);
        EXPECT_EQ(run(0, 3), 1u);
        EXPECT_EQ(results, (codes{7, 7}));
        EXPECT_EQ(log.text(), "platform_port_test: Allocate memory fail.\n");
        EXPECT_EQ(trace_text(), std::string("set_cpu_mac_addr") + MAC + "clear_cpu_mac_addr" + MAC);
    }
    const log_capture log(1);
    simulation::fail_allocation(4); /* the first frame */
    EXPECT_EQ(run(1, 3), 0u);
    EXPECT_EQ(log.text(), "vexa_send_packet_use_cpsp: Fill packet buffer fail.\n"
                          "platform_send_packet: port(3) send packet fail.\n" +
                              wrong_count(3, 450) + RETRY);
}

TEST_F(port_test, traces_its_stages)
{
    driver.ports[3].copies = driver.ports[4].copies = [](int) { return 1; };
    const log_capture log(2);
    run(0, 3);
    std::string stages;
    size_t at = 0;
    const std::string text = log.text(), mine = "platform_port_test: ";
    while ((at = text.find(mine, at)) != std::string::npos) {
        const size_t end = text.find('\n', at);
        stages += text.substr(at + mine.size(), end + 1 - at - mine.size());
        at = end;
    }
    EXPECT_EQ(stages, "Change port speed.\nWait for link up(2).\nPort is link up, start packet test.\n");
}
