/* SPDX-License-Identifier: MIT
 *
 * Registration of driver tables, and the start of the service with the first one. Each case needs a fresh process.
 */
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "simulation.h"
#include "trace.h"

static const vexa_diag_drv EMPTY = {};

static bool library_table_is(const vexa_diag_drv &table)
{
    return memcmp(&facmsg_vexa_diag_drv, &table, sizeof(table)) == 0;
}

struct registration : testing::Test {
    void SetUp() override
    {
        if (testing::UnitTest::GetInstance()->test_to_run_count() > 1)
            GTEST_SKIP() << "needs a process of its own; ctest gives it one";
        enter_temporary_folder();
        facmsg_vexa_diag_drv = {};
    }
    fake_driver driver;
    vexa_diag_drv table = fake_table();
};

TEST_F(registration, of_nothing_is_refused)
{
    const log_capture log(1);
    EXPECT_EQ(vexa_ssa_regitser_interface(nullptr), -1);
    EXPECT_EQ(log.text(), "vexa_ssa_regitser_interface: Invalid vexa diag drv.\n");
    EXPECT_TRUE(library_table_is(EMPTY));
    EXPECT_EQ(request_client().fd, -1);
}

TEST_F(registration, of_an_empty_table_starts_the_service)
{
    EXPECT_EQ(vexa_ssa_regitser_interface(&EMPTY), 0);
    ASSERT_TRUE(wait_for_service());
    EXPECT_TRUE(library_table_is(EMPTY));
    EXPECT_EQ(ask_service(frame(10, 0)), frame(10, 4, std::string(4, '\xff')));
    EXPECT_EQ(vexa_ssa_regitser_interface(&table), 0);
    EXPECT_EQ(ask_service(frame(10, 0)), frame(10, 4, std::string(4, 0)));
}

static void other() {}

TEST_F(registration, keeps_the_first_function_of_each_slot)
{
    const auto mounted = [](int slot) {
        return "vexa_ssa_regitser_interface: this interface has been mounted, offset:" + std::to_string(slot) + "\r\n";
    };
    const auto send_packet = table.send_packet;
    const log_capture log(1);
    EXPECT_EQ(vexa_tx_packet_init(send_packet), 0);
    vexa_diag_drv expected = {};
    expected.send_packet = send_packet;
    EXPECT_TRUE(library_table_is(expected));
    EXPECT_EQ(log.text(), "");

    vexa_diag_drv ends = {};
    ends.reserved_0[0] = ends.reserved_0[3] = other;
    ends.get_ex_speed_support = [](ex_speed_support *) { return 0; };
    ends.send_packet = [](const pack_info *, const uint8_t *, uint32_t) { return -1; };
    EXPECT_EQ(vexa_ssa_regitser_interface(&ends), 0);
    expected.reserved_0[0] = expected.reserved_0[3] = other;
    expected.get_ex_speed_support = ends.get_ex_speed_support;
    EXPECT_TRUE(library_table_is(expected));
    EXPECT_EQ(log.text(), mounted(175));

    EXPECT_EQ(vexa_ssa_regitser_interface(&ends), 0);
    EXPECT_EQ(log.text(), mounted(175) + mounted(0) + mounted(3) + mounted(175) + mounted(216));
    EXPECT_TRUE(wait_for_service());
}

TEST_F(registration, takes_a_table_at_any_address)
{
    char bytes[sizeof(table) + 1];
    memcpy(bytes + 1, &table, sizeof(table));
    EXPECT_EQ(vexa_ssa_regitser_interface(reinterpret_cast<const vexa_diag_drv *>(bytes + 1)), 0);
    ASSERT_TRUE(wait_for_service());
    EXPECT_TRUE(library_table_is(table));
}

TEST_F(registration, can_be_repeated_when_the_service_could_not_start)
{
    const std::string refused = "vexa_ssa_regitser_interface: Factory server init fail.\n";
    facmsg_vexa_diag_drv.reserved_0[5] = other; /* a failed start clears the table as well */
    const log_capture log(1);
    simulation::fail_next("pthread_create", EAGAIN);
    EXPECT_EQ(vexa_ssa_regitser_interface(&table), -1);
    EXPECT_TRUE(library_table_is(EMPTY));
    simulation::fail_allocation(1);
    EXPECT_EQ(vexa_ssa_regitser_interface(&table), -1);
    EXPECT_TRUE(library_table_is(EMPTY));
    EXPECT_EQ(log.text(), "facmsg_server_init: Create factory ssa lib server fail.\n" + refused +
                              "facmsg_server_init: allocate memory for factory server fail.\n" + refused);
    EXPECT_EQ(vexa_ssa_regitser_interface(&table), 0);
    EXPECT_TRUE(library_table_is(table));
    EXPECT_TRUE(wait_for_service());
}

TEST_F(registration, waits_for_the_socket_s_folder)
{
    ASSERT_EQ(rmdir("tmp"), 0);
    const log_capture log(1);
    EXPECT_EQ(vexa_ssa_regitser_interface(&table), 0);
    while (trace_count("wait_us(1000000)") < 3)
        std::this_thread::yield();
    ASSERT_EQ(mkdir("tmp", 0700), 0);
    ASSERT_TRUE(wait_for_service());
    const std::string attempt = "factory_ssa_lib_socket_create: bind socket[tmp/.factory_ssa_socket] fail, "
                                "errno=No such file or directory\n"
                                "factory_ssa_lib_server_thread_func: continue to create server socket.\r\n";
    EXPECT_EQ(log.text().substr(0, 2 * attempt.size()), attempt + attempt);
}
