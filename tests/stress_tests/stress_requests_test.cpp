/* SPDX-License-Identifier: MIT
 *
 * The stress test requests as wholes: the order of everything they do, the stage that each fault stops them at, waiting
 * for links, and repeated passes.
 */
#include <gtest/gtest.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "simulation.h"
#include "trace.h"

enum : uint32_t { FLOW = 19, PAIRS = 23, BROADCAST, SERPENTINE, PRBS };
static const uint32_t ALL[] = {FLOW, PAIRS, BROADCAST, SERPENTINE, PRBS};

static std::map<uint32_t, std::string> operation = {{FLOW, "facmsg_flow_pressure_fun"},
                                                    {PAIRS, "facmsg_ess_flow_pressure_fun"},
                                                    {BROADCAST, "facmsg_ess_bc_flow_pressure_fun"},
                                                    {SERPENTINE, "facmsg_ess_serpentine_flow_fun"},
                                                    {PRBS, "facmsg_ess_sfi_prbs_fun"}};

static std::string times(int count, const std::string &text)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

/* The text once for each port, in the place of every %. */
static std::string each(const std::string &text, const std::string &ports = "358")
{
    std::string all;
    for (const char port : ports)
        for (const char byte : text)
            all += byte == '%' ? port : byte;
    return all;
}

/* The trace without the scan of the ports. */
static std::string calls()
{
    const std::string text = trace_text();
    return text.substr(std::min(text.size(), text.find("port_on_off")));
}

/* Lines as the trace shows them. */
static std::string as_traced(const std::string &lines)
{
    trace_clear();
    for (size_t at = 0, end; (end = lines.find('\n', at)) != std::string::npos; at = end + 1)
        trace_add(lines.substr(at, end - at));
    return trace_text();
}

struct stress : testing::Test {
    stress()
    {
        for (uint32_t port = 1; port <= 256; port++)
            driver.add_port(port);
        driver.ports[3].ability = {1, 0};
        driver.ports[5].ability = {1, 1};
        driver.ports[8].ability = {0, 1};
        heal();
    }
    ~stress() override
    {
        simulation::fail_allocation(0);
    }
    /* A switch without faults, whose next stress test is its first. */
    void heal()
    {
        facmsg_vexa_diag_drv = fake_table();
        g_first_phy_loopback = 0;
        simulation::fail_allocation(0);
        driver.failures.clear();
        for (auto &[number, port] : driver.ports)
            port = {.ability = port.ability, .phy_id = port.phy_id};
        driver.answers = {
            {"get_port_type", [](uint32_t port, int) { return port == 3   ? 1
                                                              : port == 5 ? 10
                                                                          : 77; }},
            {"get_ex_speed_support", [](uint32_t, int) { return 0x01010101; }},
            {"get_port_stat", [](uint32_t, int) { return 20000; }},
        };
        driver.on_send = [this](const pack_info &, const uint8_t *frame, uint32_t length) {
            simulation::pass(1600); /* 10000 frames in 16 s */
            const pack_info end = {0, 0, chain_end + 0x100};
            vexa_recv_packet(&end, frame, length);
        };
    }
    /* Asks with result 9 and unit 6. The reply starts alike in all types: result, unit, port count, stage. */
    void ask(uint32_t type, uint32_t stage_as_sent = 0)
    {
        const uint32_t sizes[] = {2340, 3860, 3860, 4120, 1040};
        const uint32_t size = sizes[type == FLOW ? 0 : type - PAIRS + 1];
        payload.assign(size, '\0');
        const uint32_t head[] = {9, 6, 88, stage_as_sent};
        memcpy(payload.data(), head, sizeof(head));
        trace_clear();
        const std::string reply =
            ask_dispatcher(type, payload, type == FLOW ? facmsg_flow_pressure_fun : facmsg_lib_test_main);
        EXPECT_EQ(reply.substr(0, 8), frame(type, size));
        payload = reply.substr(8);
        ASSERT_EQ(payload.size(), size);
        EXPECT_EQ(word(1), 6u);
    }
    uint32_t word(size_t index) const
    {
        uint32_t value;
        memcpy(&value, payload.data() + 4 * index, sizeof(value));
        return value;
    }
    fake_driver driver;
    uint32_t chain_end = 8; /* where frames reach the CPU */
    std::string payload;
};

/* Ports off, speeds, ports on: fiber 8 has no copper, and port 5 is an extended-speed one. */
static std::string speeds(const char *copper, const char *ex_copper, const char *fiber,
                          const std::string &ports = "358")
{
    const auto set = [&](char port, const char *code) {
        if (ports.find(port) == std::string::npos)
            return std::string();
        return each("get_port_type(6,%)\nset_status(6,%,0,", {port}) + code + ",0,0,0)\n";
    };
    return each("port_on_off(6,%,0)\n", ports) + "get_ex_speed_support()\nport_speed_prepare()\n" + set('3', copper) +
           set('5', ex_copper) + set('8', fiber) + each("port_on_off(6,%,1)\n", ports) + "wait_us(2000000)\n";
}

static std::string links(const std::string &ports = "358")
{
    const std::string look = each("get_status(6,%)\n", ports);
    return look + times(8, "wait_us(1000000)\n" + look);
}

static const std::string LOOPBACK = each("port_phy_loopback(6,%,0)\n"),
                         NO_LOOPBACK = each("port_phy_loopback(6,%,1)\n"), CLEAR = each("clear_port_stat(6,%)\n"),
                         IN_VLAN = each("port_vlan1(6,%,1)\n"), OUT_OF_VLAN = each("port_vlan1(6,%,0)\n"),
                         TRAFFIC = "wait_us(30000000)\n", SETTLE = "wait_us(2000000)\n",
                         COUNTERS = each("get_port_fcs(6,%)\nget_port_stat(6,%)\n"),
                         FIRST_LOOPBACK = LOOPBACK + NO_LOOPBACK + LOOPBACK,
                         ESS_START = speeds("3", "13", "4") + FIRST_LOOPBACK + links() + CLEAR;

/* Frames of these lengths, four of those marked with a *. */
static std::string frames(const std::string &port, const std::string &vlan, std::initializer_list<std::string> lengths)
{
    std::string all;
    for (const auto &length : lengths)
        all += times(length.back() == '*' ? 4 : 1, "get_port_phyid(" + port + "," + vlan + ",1,0,1)\nsend_packet(0," +
                                                       vlan + "," + std::to_string(256 + std::stoi(port)) + "," +
                                                       std::to_string(std::stoi(length)) + ")\n");
    return all;
}

static std::string ess_frames(const std::string &port, const std::string &vlan)
{
    return frames(port, vlan, {"64*", "128*", "512*", "1518*"});
}

static std::string flow_setting(const std::string &start)
{
    return start + links() + CLEAR + IN_VLAN + frames("3", "1", {"64*", "128", "256", "512", "1518"}) + TRAFFIC +
           OUT_OF_VLAN + SETTLE + each("get_port_fcs(6,%)\n", "35") + each("get_port_stat(6,%)\n", "35") +
           "get_port_fcs(6,8)\n" + each("get_port_stat(6,%)\n", "88");
}

static std::string pair_vlans(const std::string &add)
{
    return "port_vlan_pair(6,3,5,100,0,0," + add + ")\nport_vlan_pair(6,8,8,102,0,0," + add + ")\n";
}

static std::string chain(const std::string &add, const std::string &vlan_3, const std::string &vlan_5,
                         const std::string &vlan_8)
{
    return "port_vlan_pair(6,3,3,100,1,1," + add + ")\nport_vlan_pair(6,3,5,101,0,1," + add + ")\nset_pvid(6,3," +
           vlan_3 + ")\nport_vlan_pair(6,5,8,102,0,1," + add + ")\nset_pvid(6,5," + vlan_5 +
           ")\nport_vlan_pair(6,8,8,103,0,0," + add + ")\nset_pvid(6,8," + vlan_8 +
           ")\nvlan_static_mac(6,8,f0:ff:ff:ff:ff:ff,103," + add + ")\nport_vlan_pair(6,3,3,0,1,1," + add + ")\n";
}

TEST_F(stress, does_everything_in_order)
{
    const std::string fiber = "58", cpu_count = "get_port_phyid(8,0,0,0,0)\n";
    const std::pair<uint32_t, std::string> cases[] = {
        {FLOW, flow_setting(speeds("1", "3", "3")) + flow_setting(speeds("2", "12", "4")) +
                   flow_setting(speeds("3", "13", "3")) + IN_VLAN},
        {PAIRS, ESS_START + pair_vlans("1") + ess_frames("3", "100") + ess_frames("5", "100") + ess_frames("8", "102") +
                    TRAFFIC + pair_vlans("0") + NO_LOOPBACK + SETTLE + COUNTERS},
        {BROADCAST, ESS_START + IN_VLAN + ess_frames("3", "1") + TRAFFIC + OUT_OF_VLAN + SETTLE + COUNTERS +
                        NO_LOOPBACK + IN_VLAN},
        {SERPENTINE, ESS_START + cpu_count + chain("1", "101", "102", "103") + "get_port_phyid(3,0,1,0,1)\n" +
                         times(20000, "send_packet(0,0,259,256)\n") + "wait_us(1000000)\n" + chain("0", "1", "1", "1") +
                         NO_LOOPBACK + SETTLE + cpu_count + COUNTERS},
        {PRBS, speeds("", "13", "4", fiber) + each("port_phy_loopback(6,%,0)\n", fiber) + links(fiber) +
                   each("get_clear_prbs_status(6,%)\n", fiber) + each("begin_end_prbs(6,%,1)\n", fiber) +
                   "wait_us(60000000)\n" + each("get_clear_prbs_status(6,%)\n", fiber) +
                   each("begin_end_prbs(6,%,0)\n", fiber) + each("port_phy_loopback(6,%,1)\n", fiber)},
    };
    for (const auto &[type, expected] : cases) {
        SCOPED_TRACE(type);
        heal();
        uint32_t readings = 0;
        driver.answers["get_clear_prbs_status"] = [&](uint32_t, int) { return ++readings; };
        ask(type);
        const std::string seen = calls();
        EXPECT_EQ(seen, as_traced(expected));
        EXPECT_EQ(word(0), 9u);
        EXPECT_EQ(word(2), type == PRBS ? 2u : 3u);
        EXPECT_EQ(word(3), 0u);
        const size_t speed_codes = type == FLOW ? 24 : type == SERPENTINE ? 20 : 16;
        if (type == PRBS) {
            EXPECT_EQ(word(4), 3u); /* the second reading of the first port */
        } else {
            EXPECT_EQ(payload.substr(speed_codes, type == FLOW ? 9 : 3),
                      type == FLOW ? "\1\3\3\2\14\4\3\15\3" : "\3\15\4");
        }
        if (type == SERPENTINE) {
            EXPECT_EQ(word(4), 20000u);
        }
        ask(type);
        EXPECT_EQ(trace_count("port_phy_loopback(6,8,"), type == FLOW ? 0 : 2) << "the second time";
    }
}

TEST_F(stress, stops_at_the_stage_that_fails)
{
    const std::string speed = "set port speed ,copper_speed2, ex_copper_speed2, fiber_speed1 fail(ret = 1).\n",
                      up = "get port link to up on 1 time.\n", vlan = up + "port set pvid faild.\n",
                      cpsp = up + "port cpsp faild.\n", cancel = up + "port cancel vlan1 faild.\n",
                      down = "port down.\n", loopback = "set port phy loopback ,port5 fail(ret = 4).\n",
                      bc_loopback = "set port phy loopback fail(ret = -1).\n",
                      flow_speed = "set port speed ,copper_speed0 fiber_speed0 fail(ret = 1).\n";
    const struct {
        uint32_t type;
        fake_failure failure;
        uint32_t stage;
        std::string log; /* the start of it, for flow pressure, which goes on */
        bool counters_read;
    } cases[] = {
        {PAIRS, {"set_status"}, 4, speed, false},
        {PAIRS, {"down"}, 5, down, false},
        {PAIRS, {"port_vlan_pair", 3, 1}, 6, vlan, false},
        {PAIRS, {"send_packet", 8, 16}, 7, cpsp, false},
        {PAIRS, {"get_port_phyid", 5}, 7, cpsp, false},
        {PAIRS, {"port_vlan_pair", 3, 2}, 8, cancel, false},
        {PAIRS, {"port_phy_loopback", 5, 2, 4}, 10, loopback, false},
        {PAIRS, {"port_phy_loopback", 5, 4, 4}, 11, up + loopback, false},
        {BROADCAST, {"set_status"}, 4, speed, false},
        {BROADCAST, {"down"}, 5, down, false},
        {BROADCAST, {"port_vlan1", 5, 1}, 6, vlan, false},
        {BROADCAST, {"get_port_phyid", 3}, 7, cpsp, false},
        {BROADCAST, {"port_vlan1", 5, 2}, 8, cancel, false},
        {BROADCAST, {"port_vlan1", 5, 3}, 0, up + "set all port forward faild.\n", true},
        {BROADCAST, {"port_phy_loopback", 5, 3, 4}, 10, bc_loopback, false},
        {BROADCAST, {"port_phy_loopback", 5, 4, 4}, 11, up + bc_loopback, true},
        {SERPENTINE, {"set_status"}, 4, speed, false},
        {SERPENTINE, {"down"}, 5, down, false},
        {SERPENTINE, {"set_pvid", 3, 1}, 6, vlan, false},
        {SERPENTINE, {"send_packet", 3, 10001}, 7, cpsp, false},
        {SERPENTINE, {"gettimeofday"}, 7, cpsp, false},
        {SERPENTINE, {"vlan_static_mac", 8, 2}, 8, cancel, false},
        {SERPENTINE, {"port_phy_loopback", 5, 1, 4}, 10, loopback, false},
        {SERPENTINE, {"port_phy_loopback", 5, 4, 4}, 11, up + loopback, false},
        {PRBS, {"set_status"}, 4, speed, false},
        {PRBS, {"down"}, 5, down, false},
        {PRBS, {"port_phy_loopback", 5, 1, 4}, 6, loopback, false},
        {PRBS, {"port_phy_loopback", 5, 2, 4}, 7, up + loopback, false},
        {FLOW, {"set_status"}, 4, flow_speed, false},
        {FLOW, {"down"}, 5, "port3 down.\n" + down, false},
        {FLOW, {"port_vlan1"}, 6, up + "port speed 0 set vlan1 faild.\n", false},
        {FLOW, {"port_vlan1", 3, -2}, 8, up + "port speed 0 cancel vlan1 faild.\n", false},
        {FLOW, {"get_port_phyid"}, 7, up + "port speed 0 cpsp faild.\n", false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + " " + std::string(c.failure.slot));
        heal();
        driver.failures = {c.failure};
        if (c.failure.slot == "down")
            driver.ports[8].down_polls = NEVER;
        if (c.failure.slot == "gettimeofday")
            simulation::fail_next("gettimeofday");
        const log_capture log(1);
        ask(c.type);
        EXPECT_EQ(word(0), c.type == FLOW ? 0u : 9u); /* flow pressure makes three passes */
        EXPECT_EQ(word(3), c.stage);
        EXPECT_EQ(trace_count("get_port_stat") > 0, c.counters_read);
        const std::string lines = log.text_of(operation[c.type]);
        EXPECT_EQ(c.type == FLOW ? lines.substr(0, c.log.size()) : lines, c.log);
        EXPECT_EQ(trace_count("port_speed_prepare"), c.type == FLOW ? 9 : 1);
        if (c.type == FLOW || c.type == BROADCAST) {
            EXPECT_GT(trace_count("port_vlan1(6,3,1)"), 0);
        }
        const size_t port_down = c.type == FLOW ? 33 : c.type == SERPENTINE ? 23 : 19;
        if (c.type != PRBS) {
            EXPECT_EQ(payload.substr(port_down, 3), std::string(2, 0) + (c.stage == 5 ? '\1' : '\0'));
        }
    }
}

TEST_F(stress, waits_for_links_that_hold)
{
    const auto up = [](int attempt) { return "get port link to up on " + std::to_string(attempt) + " time.\n"; };
    const std::string broken = up(1) + "continue 5 times get port link to down.\n" + up(2);
    const struct {
        uint32_t type;
        int down_polls, breaks_in, one_s, two_s;
        std::string log;
    } cases[] = {
        {PAIRS, 2, 0, 10, 2, up(3)},       {PAIRS, 11, 0, 19, 2, up(12)},    {PAIRS, 12, 0, 12, 1, "port down.\n"},
        {PAIRS, 0, 6, 14, 2, broken},      {BROADCAST, 0, 6, 13, 3, broken}, {BROADCAST, 1, 0, 9, 2, up(2)},
        {SERPENTINE, 0, 6, 15, 2, broken}, {PRBS, 0, 6, 14, 1, broken},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.log);
        heal();
        driver.ports[8].down_polls = c.down_polls;
        driver.ports[8].breaks_in = c.breaks_in;
        const log_capture log(1);
        ask(c.type);
        EXPECT_EQ(log.text_of(operation[c.type]), c.log);
        EXPECT_EQ(trace_count("wait_us(1000000)"), c.one_s);
        EXPECT_EQ(trace_count("wait_us(2000000)"), c.two_s);
    }
}

TEST_F(stress, repeats_a_pass_with_wrong_counts_twice)
{
    for (const uint32_t type : {FLOW, PAIRS, BROADCAST, SERPENTINE})
        for (const int bad_passes : {1, 2, 3, 9}) {
            SCOPED_TRACE(std::to_string(type) + " " + std::to_string(bad_passes));
            heal();
            const int settings = type == FLOW ? 3 : 1;
            int readings = 0; /* of port 5: one a setting */
            driver.answers["get_port_fcs"] = [&](uint32_t port, int) {
                return port == 5 && ++readings <= bad_passes * settings ? 3 : 0;
            };
            ask(type);
            const bool failed = bad_passes >= 3;
            EXPECT_EQ(trace_count("port_speed_prepare"), settings * std::min(bad_passes + 1, 3));
            EXPECT_EQ(word(0), 0u);
            EXPECT_EQ(word(2), 3u);
            EXPECT_EQ(word(3), failed ? 9u : 0u);
            const size_t fcs_err = type == FLOW ? 801 : type == SERPENTINE ? 791 : 275;
            EXPECT_EQ(payload[fcs_err + 1], failed ? 1 : 0);
        }
    heal();
    driver.on_send = [](const pack_info &, const uint8_t *, uint32_t) { simulation::pass(1600); };
    ask(SERPENTINE);
    EXPECT_EQ(word(3), 9u) << "nothing reached the CPU";
}

TEST_F(stress, is_refused_without_driver_ports_or_memory)
{
    const auto refused = [&](uint32_t type, uint32_t result, const std::string &line) {
        const log_capture log(1);
        ask(type, 77);
        EXPECT_EQ(word(0), result);
        EXPECT_EQ(word(3), 77u) << "the stage, as sent";
        const std::string lines = log.text_of(operation[type]);
        EXPECT_NE(lines.find(line), std::string::npos) << lines;
        heal();
    };
    for (const uint32_t type : ALL) {
        SCOPED_TRACE(type);
        const std::string name = type == SERPENTINE || type == PRBS ? "serpentine flow test" : "flow pressure";
        const auto without = [&](auto... members) {
            const auto one = [&](auto member) {
                facmsg_vexa_diag_drv.*member = nullptr;
                refused(type, 1, name + " no support(get_ability:");
                EXPECT_EQ(trace_text(), "");
            };
            (one(members), ...);
        };
        using drv = vexa_diag_drv;
        without(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::port_on_off, &drv::get_port_type);
        if (type != PRBS)
            without(&drv::port_vlan1, &drv::clear_port_stat, &drv::get_port_phyid, &drv::send_packet,
                    &drv::get_port_fcs, &drv::get_port_stat);
        if (type != FLOW)
            without(&drv::port_phy_loopback);
        if (type == PAIRS || type == SERPENTINE)
            without(&drv::port_vlan_pair);
        if (type == SERPENTINE)
            without(&drv::set_pvid, &drv::vlan_static_mac);
        if (type == PRBS)
            without(&drv::begin_end_prbs, &drv::get_clear_prbs_status);
        simulation::fail_allocation(1);
        refused(type, 3, "Allocate memory fail.\n");
        const auto ports = std::exchange(driver.ports, {});
        driver.failures = {{"get_ability", 256, 0, 5}};
        refused(type, 2,
                std::string("Get port256 ability fail(ret = 5).\n") +
                    (name[0] == 's' ? "No port for serpentine flow" : "No support flow pressure for") + " testing.\n");
        EXPECT_EQ(word(2), 88u);
        driver.ports = ports;
    }
}

TEST_F(stress, takes_256_ports)
{
    for (auto &[number, port] : driver.ports)
        port.ability = {0, 1};
    chain_end = 256;
    for (const uint32_t type : ALL) {
        ask(type);
        EXPECT_EQ(word(2), 256u);
        EXPECT_EQ(word(3), 0u) << type;
        EXPECT_EQ(trace_count("port_vlan_pair(6,255,256,354,0,0,1)"), type == PAIRS);
        EXPECT_EQ(trace_count("port_vlan_pair(6,255,256,355,0,1,1)"), type == SERPENTINE);
    }
}
