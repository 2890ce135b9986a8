/* SPDX-License-Identifier: MIT
 *
 * The PoE requests: order of driver calls and waits, the code and the line that each fault leaves, full lists.
 */
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "facmsg_internal.h"
#include "fake_driver.h"
#include "log_capture.h"
#include "poe_tests/poe_checks.h"
#include "request_client.h"
#include "simulation.h"
#include "trace.h"

using ports = std::vector<uint32_t>;

constexpr port_ability_row POE_PORT = {FACMSG_ABILITY_POE, 0}, FIBER_POE_PORT = {0, FACMSG_ABILITY_POE},
                           HPOE_PORT = {FACMSG_ABILITY_HPOE, 0}, FIBER_HPOE_PORT = {0, FACMSG_ABILITY_HPOE},
                           BOTH = {FACMSG_ABILITY_HPOE, FACMSG_ABILITY_POE}, NEITHER = {~(3u << 25), ~(3u << 25)};
constexpr char NO_SUPPORT[] = ": Port test no support(interface is NULL).\n";
const std::string WAIT_1 = "wait_us(1000000)\n", WAIT_5 = "wait_us(5000000)\n", WAIT_10 = "wait_us(10000000)\n";

static std::string each(const ports &numbers, const std::string &slot, const std::string &more = "")
{
    std::string calls;
    for (const uint32_t number : numbers)
        calls += slot + "(" + std::to_string(number) + more + ")\n";
    return calls;
}

static std::string scan()
{
    std::string calls;
    for (uint32_t number = 1; number <= 256; number++)
        calls += "get_ability(6," + std::to_string(number) + ")\n";
    return calls;
}

static std::string switched(const ports &on, const ports &off)
{
    return each(on, "poe_set_port_enable", ",1") + each(off, "poe_set_port_enable", ",0");
}

/* What a group goes through, with good ports and loads. */
static std::string group_tested(const ports &group, const std::string &limit)
{
    std::string overloads;
    for (const uint32_t number : group)
        overloads += each({number}, "poe_set_max_power", ",3000") + each({number}, "poe_get_overload") +
                     each({number}, "poe_set_max_power", "," + limit);
    return each(group, "poe_get_power_state") + each(group, "poe_get_pd_class") + overloads + WAIT_10 +
           switched({}, group) + WAIT_1 + each(group, "poe_get_power");
}

struct poe_requests : testing::Test {
    poe_requests()
    {
        answer("poe_get_power_state", 1);
        answer("poe_get_overload", 1);
        answer("poe_get_pd_class", 0x104);
    }
    /* What a slot writes, on all ports or on one. */
    void answer(const char *slot, uint64_t value, uint32_t only = 0)
    {
        const auto others = driver.answers[slot];
        driver.answers[slot] = [=](uint32_t port, int nth) {
            return only == 0 || port == only ? value : others ? others(port, nth) : 0;
        };
    }
    /* The reply to a request of zeros with unit 6. */
    template <class Record = poe_test_reply> Record ask(uint32_t type)
    {
        trace_clear();
        const uint64_t start = simulation::now_us();
        Record record = {};
        record.unit = 6;
        const std::string reply = ask_dispatcher(type, bytes_of(record));
        seconds = (simulation::now_us() - start) / 1000000;
        EXPECT_EQ(reply.substr(0, 8), frame(type == FACMSG_PBOX_HPOE ? 13 : type, sizeof(Record)));
        EXPECT_EQ(reply.size(), 8 + sizeof(Record));
        memcpy(&record, reply.data() + 8, sizeof(Record));
        return record;
    }
    fake_driver driver;
    uint64_t seconds = 0;
};

TEST_F(poe_requests, test_standard_ports_at_once)
{
    driver.add_port(3, POE_PORT);
    driver.add_port(4, HPOE_PORT);
    driver.add_port(5, NEITHER);
    driver.add_port(7, FIBER_POE_PORT);
    const log_capture log(2);
    const auto reply = ask(FACMSG_PORT_POE);
    EXPECT_EQ(trace_text(), scan() + WAIT_5 + group_tested({3, 7}, "30000") + switched({3, 7}, {}) + WAIT_10);
    EXPECT_EQ(bytes_of(reply), bytes_of(poe_test_reply{0, 6, 2, {3, 7}, {}, {4, 4}, {}, {}}));
    const std::string text = log.text(), op = "facmsg_port_poe_fun: ";
    EXPECT_TRUE(text.starts_with(op + "Get port1 ability fail(ret = -2).\n" + op +
                                 "Get port 1 ability copper:0x0 fiber:0x0 .\n"));
    EXPECT_TRUE(text.ends_with("facmsg_get_port_poe_status: port3 poe states:1.\n"
                               "facmsg_get_port_poe_status: port7 poe states:1.\n" +
                               op + "Get port 3 poe power:0.\n" + op + "Get port 7 poe power:0.\n" +
                               "facmsg_send: Msg type:6, payload_size:2828.\n"));
}

TEST_F(poe_requests, test_groups_in_turn_with_the_other_off)
{
    driver.add_port(3, POE_PORT);
    driver.add_port(4, FIBER_HPOE_PORT);
    driver.add_port(5, BOTH);
    const ports all = {4, 5, 3, 5};
    const auto both = ask(FACMSG_PORT_HPOE);
    EXPECT_EQ(trace_text(), scan() + scan() + switched({4, 5}, {3, 5}) + WAIT_10 + group_tested({4, 5}, "100000") +
                                switched({}, {4, 5}) + switched({3, 5}, {}) + WAIT_10 + group_tested({3, 5}, "30000") +
                                switched(all, {}) + WAIT_10);
    EXPECT_EQ(bytes_of(both), bytes_of(poe_test_reply{0, 6, 4, {4, 5, 3, 5}, {}, {4, 4, 4, 4}, {}, {}}));
    const auto box = ask(FACMSG_PBOX_HPOE);
    EXPECT_EQ(trace_text(), scan() + scan() + switched({4, 5}, {3, 5}) + WAIT_10 + group_tested({4, 5}, "100000") +
                                switched(all, {}) + WAIT_10);
    EXPECT_EQ(bytes_of(box), bytes_of(poe_test_reply{0, 6, 2, {4, 5, 3, 5}, {}, {4, 4}, {}, {}}));
}

TEST_F(poe_requests, with_an_empty_group_wait_only)
{
    const struct {
        uint32_t type;
        port_ability_row ability;
        uint32_t result, count, seconds;
    } cases[] = {{6, POE_PORT, 0, 1, 26},  {6, HPOE_PORT, 2, 0, 0}, {13, HPOE_PORT, 0, 1, 52},
                 {13, POE_PORT, 0, 1, 52}, {13, NEITHER, 2, 0, 0},  {14, POE_PORT, 0, 0, 31},
                 {14, NEITHER, 2, 0, 0},   {17, BOTH, 0, 1, 13},    {17, NEITHER, 2, 0, 0}};
    for (const auto &c : cases) {
        driver.add_port(256, c.ability);
        poe_test_reply reply = {};
        if (c.type == 17)
            memcpy(&reply, bytes_of(ask<vop_test_reply>(17)).data(), sizeof(vop_test_reply));
        else
            reply = ask(c.type);
        EXPECT_EQ(reply.result, c.result) << c.type;
        EXPECT_EQ(reply.port_count, c.count) << c.type;
        EXPECT_EQ(seconds, c.seconds) << c.type;
        EXPECT_EQ(trace_count("poe_set_port_enable(256,1)") > 0, c.result == 0);
    }
}

TEST_F(poe_requests, check_states_by_what_the_controller_knows)
{
    const struct {
        uint32_t word, poe_code, hpoe_code;
    } cases[] = {{1, 0, 0},       {0xFFFF0001, 0, 0},     {0, 15, 15}, {2, 16, 16},
                 {3, 17, 21},     {0x50003, 0x50011, 21}, {4, 17, 22}, {0x50007, 0x50011, 0x50011},
                 {0xFFFF, 17, 17}};
    for (const auto &c : cases) {
        uint32_t codes[3] = {};
        g_test_ports[1] = 9;
        answer("poe_get_power_state", c.word, 9);
        EXPECT_EQ(facmsg_get_port_poe_status(2, codes), c.poe_code != 0);
        EXPECT_EQ(codes[1], c.poe_code);
        codes[1] = 0;
        EXPECT_EQ(facmsg_get_port_hpoe_status(1, 2, codes), c.hpoe_code != 0);
        EXPECT_EQ(codes[1], c.hpoe_code) << c.word;
        EXPECT_EQ(codes[0] + codes[2], 0u);
    }
    driver.failures = {{"poe_get_power_state", 9}};
    const log_capture log(1);
    uint32_t codes[3] = {0, 99, 0};
    EXPECT_EQ(facmsg_get_port_hpoe_status(1, 2, codes), 1);
    EXPECT_EQ(codes[1], 99u) << "the first code stays";
    EXPECT_EQ(log.text(), "facmsg_get_port_hpoe_status: Get port9 poe power states fail.\n");
    trace_clear();
    EXPECT_EQ(facmsg_get_port_hpoe_status(1, 1, codes) + facmsg_get_port_poe_status(0, codes), 0);
    EXPECT_EQ(trace_text(), "");
}

TEST_F(poe_requests, check_overload_and_restore_the_limit)
{
    const std::string op = "port_hpoe_overload_test: ", set_3w = op + "Set port 9 poe max(3w)  power fail.\n",
                      restore = op + "Set port 9 poe max(30w)  power fail.\n",
                      none = op + "Get port 9 poe power:777.\n" + op + "port 9 is not poe overload.\n",
                      no_power = op + "Get port 9 poe power:0.\n" + op + "port 9 is not poe overload.\n";
    const uint32_t info = 0xABCD0009, no_overload = 9 << 16 | 19;
    const struct {
        std::vector<fake_failure> failures;
        uint64_t flag;
        uint32_t code;
        std::string log;
        int calls; /* of poe_set_max_power */
    } cases[] = {{{}, 1, 0, "", 2},
                 {{{"poe_set_max_power", 9, 1}}, 1, 13, set_3w, 1},
                 {{{"poe_get_overload", 9}}, 1, 18, op + "Get port 9 poe overload fail.\n", 2},
                 {{}, 0, no_overload, none, 2},
                 {{}, 2, no_overload, none, 2},
                 {{{"poe_get_power", 9}}, 0, no_overload, no_power, 2},
                 {{{"poe_set_max_power", 9, 2}}, 1, 13, restore, 2},
                 {{{"poe_set_max_power", 9, 2}}, 0, 13, none + restore, 2}};
    answer("poe_get_power", 777);
    for (const auto &c : cases) {
        driver.failures = c.failures;
        driver.answers["poe_get_overload"] = [&](uint32_t, int nth) { return nth == 0 ? c.flag : info; };
        trace_clear();
        poe_test_reply reply = {};
        const log_capture log(1);
        EXPECT_EQ(port_hpoe_overload_test(2, 9, &reply, 4711), c.code != 0);
        EXPECT_EQ(reply.overload_code[2], c.code) << c.log;
        EXPECT_EQ(log.text(), c.log);
        EXPECT_EQ(trace_count("poe_set_max_power"), c.calls);
        EXPECT_EQ(trace_count("poe_get_overload"), c.calls - 1);
        EXPECT_EQ(trace_count("poe_set_max_power(9,4711)"), c.calls - 1);
    }
}

TEST_F(poe_requests, leave_a_code_for_every_fault_and_go_on)
{
    const std::string op = "facmsg_port_poe_fun: ", off = op + "Set port 4 poe disable fail.\n",
                      power = op + "Get port 4 poe power fail.\n",
                      overload = "port_poe_overload_test: Get port 4 poe overload fail.\n";
    const std::string no_class = op + "Get port4 poe pd class fail.\n";
    const fake_failure once = {"poe_get_overload", 4, 1}; /* two of them: the first and the second call */
    const struct {
        std::vector<fake_failure> failures;
        uint64_t power, state;
        uint8_t result, state_code, pd_class, overload_code, power_off_code;
        std::string log;
        uint64_t seconds;
    } cases[] = {
        {{{"poe_set_port_enable", 4, 1}}, 0, 1, 1, 0, 4, 0, 12, off, 26},
        {{{"poe_set_port_enable", 4, 1}}, 5, 1, 1, 0, 4, 0, 20, off, 26},
        {{}, 5, 1, 1, 0, 4, 0, 20, "", 26},
        {{{"poe_get_power", 4}}, 0, 1, 1, 0, 4, 0, 12, power, 26},
        {{{"poe_get_pd_class", 4}}, 0, 1, 1, 0, 255, 0, 0, no_class, 26},
        {{{"poe_get_overload", 4}}, 0, 1, 1, 0, 4, 18, 0, overload + overload + overload, 46},
        {{once, once}, 0, 1, 0, 0, 4, 0, 0, overload + overload, 46},
        {{}, 0, 2, 1, 16, 0, 0, 0, "", 26},
    };
    driver.add_port(3, POE_PORT);
    driver.add_port(4, POE_PORT);
    for (const auto &c : cases) {
        driver.failures = c.failures;
        answer("poe_get_power", c.power, 4);
        answer("poe_get_power_state", c.state, 4);
        const log_capture log(1);
        const poe_test_reply expected = {
            c.result, 6, 2, {3, 4}, {0, c.state_code}, {4, c.pd_class}, {0, c.overload_code}, {0, c.power_off_code}};
        EXPECT_EQ(bytes_of(ask(FACMSG_PORT_POE)), bytes_of(expected)) << c.log << c.state;
        EXPECT_EQ(log.text(), c.log);
        EXPECT_EQ(seconds, c.seconds);
        EXPECT_EQ(trace_count("poe_get_overload(4)") > 0, c.state == 1);
        EXPECT_TRUE(trace_text().ends_with(switched({3, 4}, {}) + WAIT_10));
    }
}

TEST_F(poe_requests, keep_to_256_entries)
{
    for (uint32_t number = 1; number <= 256; number++)
        driver.add_port(number, POE_PORT);
    driver.failures = {{"poe_get_power_state"}, {"poe_get_power"}};
    poe_test_reply expected = {1, 6, 256, {}, {}, {}, {}, {}};
    for (uint32_t k = 0; k < 256; k++) {
        expected.ports[k] = static_cast<uint8_t>(k + 1); /* the last shows as 0 */
        expected.state_code[k] = 14;
        expected.power_off_code[k] = 12;
    }
    EXPECT_EQ(bytes_of(ask(FACMSG_PORT_POE)), bytes_of(expected));
    EXPECT_TRUE(trace_text().ends_with("poe_set_port_enable(256,1)\n" + WAIT_10));

    for (uint32_t number = 1; number <= 256; number++)
        driver.ports[number].ability = number <= 200 ? BOTH : NEITHER;
    for (uint32_t k = 200; k < 256; k++)
        expected.ports[k] = static_cast<uint8_t>(k - 199);
    EXPECT_EQ(bytes_of(ask(FACMSG_PORT_HPOE)), bytes_of(expected)) << "200 and the first 56 again";
    const auto box = ask(FACMSG_PBOX_HPOE);
    EXPECT_EQ(box.port_count, 200u);
    EXPECT_EQ(box.state_code[199], 14u);
    EXPECT_EQ(box.state_code[200], 0u);
}

TEST_F(poe_requests, are_not_supported_without_their_slots)
{
    const std::vector<uint32_t> poe = {147, 148, 149, 150, 151, 152, 165};
    const struct {
        uint32_t type, reply_type, size;
        std::string op;
        std::vector<uint32_t> slots;
    } cases[] = {
        {6, 6, 2828, "facmsg_port_poe_fun", poe},          {13, 13, 2828, "facmsg_port_hpoe_fun", poe},
        {14, 13, 2828, "facmsg_pbox_hpoe_fun", poe},       {15, 15, 4, "facmsg_poe_mcu_upg_fun", {206}},
        {16, 16, 12, "facmsg_poe_mcu_ver_get_fun", {205}}, {17, 17, 2316, "facmsg_poe_vop_fun", {147, 148, 165, 207}},
    };
    driver.add_port(1, BOTH);
    for (const auto &c : cases)
        for (const uint32_t slot : c.slots) {
            facmsg_vexa_diag_drv = fake_table();
            memset(reinterpret_cast<char *>(&facmsg_vexa_diag_drv) + slot * sizeof(void *), 0, sizeof(void *));
            const log_capture log(1);
            const std::string rest(c.size - 4, 'x'), not_possible = {2, 0, 0, 0};
            EXPECT_EQ(ask_dispatcher(c.type, "xxxx" + rest), frame(c.reply_type, c.size, not_possible + rest)) << slot;
            EXPECT_EQ(log.text(), c.op + NO_SUPPORT);
            EXPECT_EQ(trace_text(), "");
        }
}

TEST_F(poe_requests, report_what_the_controller_driver_returns)
{
    static int result;
    facmsg_vexa_diag_drv.poe_mcu_upg = [] { return result; };
    facmsg_vexa_diag_drv.poe_get_mcu_ver = [](uint32_t *new_ver, uint32_t *cur_ver) {
        *new_ver = 262;
        *cur_ver = 261;
        return result;
    };
    const std::string ver = "facmsg_poe_mcu_ver_get_fun: vexa_drv_poe_get_mcu_ver return ",
                      upg = "facmsg_poe_mcu_upg_fun: vexa_drv_poe_mcu_upg return ",
                      ver_sent = "facmsg_send: Msg type:16, payload_size:12.\n",
                      upg_sent = "facmsg_send: Msg type:15, payload_size:4.\n";
    for (const int value : {0, 5, -1}) {
        result = value;
        const std::string number = std::to_string(value), ver_error = value ? ver + number + ".\n" : "",
                          upg_error = value ? upg + number + ".\n" : "";
        const log_capture log(2);
        EXPECT_EQ(ask_dispatcher(16, std::string(12, 'x')),
                  frame(16, 12, bytes_of(poe_mcu_ver_reply{value != 0, 262, 261})));
        EXPECT_EQ(ask_dispatcher(15, "xxxx"), frame(15, 4, bytes_of(uint32_t{value != 0})));
        EXPECT_EQ(log.text(), ver + number + " new_ver 262 cur_ver 261.\n" + ver_error + ver_sent + upg + number +
                                  ".\n" + upg_error + upg_sent);
    }
}

TEST_F(poe_requests, measure_vop_three_times_with_the_output_off)
{
    for (const uint32_t number : {2u, 3u, 4u})
        driver.add_port(number, number == 3 ? HPOE_PORT : POE_PORT);
    driver.answers["poe_get_vop_test_result"] = [](uint32_t port, int nth) { return nth == 0 ? 77 : 1000 + port; };
    driver.failures = {{"poe_get_vop_test_result", 3, 2}, {"poe_get_vop_test_result", 4, 0, 5}};
    const log_capture log(2);
    const auto reply = ask<vop_test_reply>(17);
    const auto queries = [](const std::string &number, int count) {
        std::string calls;
        while (count-- > 0)
            calls += "poe_get_vop_test_result(" + number + ")\n" + (number == "3" && count == 0 ? "" : WAIT_1);
        return calls;
    };
    EXPECT_EQ(trace_text(), scan() + switched({}, {2, 3, 4}) + WAIT_5 + queries("2", 3) + queries("3", 2) +
                                queries("4", 3) + switched({2, 3, 4}, {}) + WAIT_5);
    EXPECT_EQ(bytes_of(reply), bytes_of(vop_test_reply{1, 6, 3, {2, 3, 4}, {0, 1, 0}, {1002, 1003, 0}}));
    const std::string line = "facmsg_poe_vop_fun: vexa_drv_poe_get_vop_test_result", blanks(21, ' ');
    const std::string port_3 = line + blanks + "return 0 port_id 3 status 77 value 1003.\n" + line + blanks +
                               "return -1 port_id 3 status 0 value 1003.\n" + line + " return -1.\n" + line + blanks +
                               "return 5 port_id 4 status 0 value 0.\n";
    EXPECT_NE(log.text().find(port_3), std::string::npos);
}
