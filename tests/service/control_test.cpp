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

struct step {
    uint32_t type;
    int32_t level;
    std::string seen; /* marker file and driver calls */
};

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

static std::string port_level(const std::string &level)
{
    return "set_port_debug_level(" + level + ")\n";
}

static std::string poe_level(const std::string &level)
{
    return "set_poe_debug_level(" + level + ")\n";
}

TEST_F(control, keeps_the_marker_file_while_all_debug_output_is_off)
{
    const std::vector<step> runs[] = {
        {{7, 2, REMOVED}, {7, 1, REMOVED}, {7, 0, CREATED}, {7, 0, CREATED}},
        {{7, -1, REMOVED}, {9, 3, port_level("3") + REMOVED}, {7, 0, ""}, {9, 0, port_level("0") + CREATED}},
        {{8, 1, poe_level("1") + REMOVED}, {7, 0, ""}, {9, 0, port_level("0")}, {8, 0, poe_level("0") + CREATED}},
        {{7, 1, REMOVED}, {8, 0, poe_level("0")}, {9, 0, port_level("0")}, {7, 0, CREATED}},
        {{9, -7, port_level("-7") + REMOVED}, {8, 0, poe_level("0")}, {9, 0, port_level("0") + CREATED}},
    };
    for (const auto &run : runs) {
        for (const auto &s : run) {
            SCOPED_TRACE(std::to_string(s.type) + " " + std::to_string(s.level));
            trace_clear();
            const uint32_t reply_type = s.type == 7 ? 7 : 9;
            EXPECT_EQ(ask_dispatcher(s.type, level_words(s.level, 0x55)),
                      frame(reply_type, 8, level_words(s.level, 0)));
            EXPECT_EQ(trace_text(), s.seen);
            if (s.type == 7) {
                EXPECT_EQ(facmsg_dbg, s.level);
            }
            facmsg_dbg = 0;
        }
    }
}

TEST_F(control, changes_nothing_when_the_driver_has_no_level_or_refuses)
{
    const struct {
        uint32_t type;
        const char *slot;
        vexa_reserved_slot *entry;
        std::string op;
    } cases[] = {
        {8, "set_poe_debug_level", reinterpret_cast<vexa_reserved_slot *>(&facmsg_vexa_diag_drv) + 173,
         "facmsg_poe_debug_fun"},
        {9, "set_port_debug_level", reinterpret_cast<vexa_reserved_slot *>(&facmsg_vexa_diag_drv) + 170,
         "facmsg_port_debug_fun"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.slot);
        const log_capture log(1);
        driver.failures = {{c.slot, 0, 0, 1}};
        EXPECT_EQ(ask_dispatcher(c.type, level_words(1, 0)), frame(9, 8, level_words(1, -1)));
        driver.failures = {};
        trace_clear();
        const auto function = std::exchange(*c.entry, nullptr);
        EXPECT_EQ(ask_dispatcher(c.type, level_words(-2, 0)), frame(9, 8, level_words(-2, -1)));
        *c.entry = function;
        EXPECT_EQ(trace_text(), "");
        ask_dispatcher(7, level_words(0, 0)); /* no flag was left on */
        EXPECT_EQ(trace_text(), CREATED);
        EXPECT_EQ(log.text(), c.op + ": Set port level to 1 fail.\n" + c.op + ": Set port level to -2 fail.\n");
    }
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
    EXPECT_EQ(log.text(), "");
}

TEST_F(control, has_no_answer_to_a_null_request)
{
    const log_capture log(1);
    EXPECT_EQ(facmsg_lib_test_main(-1, nullptr), -1);
    EXPECT_EQ(log.text(), "facmsg_lib_test_main: Invalid pram--info.\n");
}
