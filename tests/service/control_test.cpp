/* SPDX-License-Identifier: MIT
 *
 * The dispatcher and the requests that control the service: log level, driver debug levels, factory mode, marker file.
 */
#include <gtest/gtest.h>
#include <vector>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "trace.h"

static const std::string REMOVED = "unlink(/tmp/proxy/defout/ssa_process)\n";
static const std::string CREATED = "system(touch /tmp/proxy/defout/ssa_process)\n";

static std::string level_words(int32_t level, int32_t status)
{
    return bytes_of(debug_level_record{level, status});
}

struct control : testing::Test {
    control()
    {
        for (const uint32_t type : {7u, 8u, 9u})
            ask_dispatcher(type, level_words(0, 0));
        trace_clear();
    }
    ~control() override
    {
        facmsg_dbg = 0;
    }
    fake_driver driver;
};

TEST_F(control, keeps_the_marker_file_while_all_debug_output_is_off)
{
    const std::string port = "set_port_debug_level", poe = "set_poe_debug_level";
    const struct {
        uint32_t type;
        int32_t level;
        std::string seen; /* driver calls and marker file */
    } steps[] = {
        {7, 2, REMOVED},
        {7, 1, REMOVED},
        {7, 0, CREATED},
        {7, 0, CREATED},
        {7, -1, REMOVED},
        {9, 3, port + "(3)\n" + REMOVED},
        {7, 0, ""},
        {9, 0, port + "(0)\n" + CREATED},
        {8, 1, poe + "(1)\n" + REMOVED},
        {7, 0, ""},
        {9, 0, port + "(0)\n"},
        {8, 0, poe + "(0)\n" + CREATED},
        {9, -7, port + "(-7)\n" + REMOVED},
        {8, 0, poe + "(0)\n"},
        {9, 0, port + "(0)\n" + CREATED},
    };
    for (const auto &s : steps) {
        SCOPED_TRACE(std::to_string(s.type) + " " + std::to_string(s.level));
        trace_clear();
        EXPECT_EQ(ask_dispatcher(s.type, level_words(s.level, 0x55)),
                  frame(s.type == 7 ? 7 : 9, 8, level_words(s.level, 0)));
        EXPECT_EQ(trace_text(), s.seen);
        EXPECT_EQ(facmsg_dbg, s.type == 7 ? s.level : 0);
        facmsg_dbg = 0;
    }
}

TEST_F(control, changes_nothing_when_the_driver_has_no_level_or_refuses)
{
    const auto fails = [&](uint32_t type, const char *slot, auto member, const std::string &op) {
        const log_capture log(1);
        driver.failures = {{slot, 0, 1, 1}};
        EXPECT_EQ(ask_dispatcher(type, level_words(1, 0)), frame(9, 8, level_words(1, -1)));
        facmsg_vexa_diag_drv.*member = nullptr;
        trace_clear();
        EXPECT_EQ(ask_dispatcher(type, level_words(-2, 0)), frame(9, 8, level_words(-2, -1)));
        ask_dispatcher(7, level_words(0, 0)); /* no flag was left on */
        EXPECT_EQ(trace_text(), CREATED);
        EXPECT_EQ(log.text(), op + ": Set port level to 1 fail.\n" + op + ": Set port level to -2 fail.\n");
    };
    fails(8, "set_poe_debug_level", &vexa_diag_drv::set_poe_debug_level, "facmsg_poe_debug_fun");
    fails(9, "set_port_debug_level", &vexa_diag_drv::set_port_debug_level, "facmsg_port_debug_fun");
}

TEST_F(control, enters_factory_mode)
{
    const std::string done = frame(10, 4, std::string(4, 0)), failed = frame(10, 4, std::string(4, '\xff'));
    EXPECT_EQ(ask_dispatcher(10, ""), done);
    EXPECT_EQ(ask_dispatcher(10, "junk"), done);
    EXPECT_EQ(trace_text(), "set_factory_mode() x2\n");
    driver.failures = {{"set_factory_mode", 0, 0, 7}};
    EXPECT_EQ(ask_dispatcher(10, ""), failed);
    facmsg_vexa_diag_drv.set_factory_mode = nullptr;
    EXPECT_EQ(ask_dispatcher(10, ""), failed);
}

TEST_F(control, traces_what_it_did)
{
    const std::string sent8 = "facmsg_send: Msg type:9, payload_size:8.\n";
    const struct {
        uint32_t type;
        std::string lines;
    } cases[] = {
        {7, "facmsg_msg_debug_fun: Set facmsg_dbg level to 2.\nfacmsg_send: Msg type:7, payload_size:8.\n"},
        {8, "facmsg_poe_debug_fun: Set port level to 2.\n" + sent8},
        {9, "facmsg_port_debug_fun: Set port level to 2.\n" + sent8},
        {10, "facmsg_enter_factory_fun: Set factory mode ok.\nfacmsg_send: Msg type:10, payload_size:4.\n"},
        {19, "facmsg_lib_test_main: Invalid srv_type(19).\nfacmsg_send: Msg type:21, payload_size:0.\n"},
    };
    for (const auto &c : cases) {
        const log_capture log(2);
        ask_dispatcher(c.type, level_words(2, 0));
        EXPECT_EQ(log.text(), c.lines);
    }
    const log_capture log(1);
    for (const uint32_t type : {7u, 8u, 9u, 10u}) /* request 7 is judged by the level it sets */
        ask_dispatcher(type, level_words(1, 0));
    EXPECT_EQ(facmsg_lib_test_main(-1, nullptr), -1);
    EXPECT_EQ(log.text(), "facmsg_lib_test_main: Invalid pram--info.\n");
}
