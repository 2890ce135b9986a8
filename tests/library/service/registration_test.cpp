/* SPDX-License-Identifier: MIT
 *
 * Registration of driver tables, and the start of the service with the first one. Each case needs a fresh process.
 */
#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "simulation.h"

static const vexa_diag_drv EMPTY = {};

static void other() {}

struct registration : testing::Test {
    void SetUp() override
    {
        if (testing::UnitTest::GetInstance()->test_to_run_count() > 1)
            GTEST_SKIP() << "needs a process of its own; ctest gives it one";
        facmsg_vexa_diag_drv = {};
    }
    /* Registers a table, and checks the result and what the library's own table holds then. */
    void add(const vexa_diag_drv *added, int result, const vexa_diag_drv &expected)
    {
        EXPECT_EQ(vexa_ssa_regitser_interface(added), result);
        EXPECT_EQ(memcmp(&facmsg_vexa_diag_drv, &expected, sizeof(expected)), 0);
    }
    temporary_folder folder;
    fake_driver driver;
    vexa_diag_drv table = fake_table();
    std::string op = "vexa_ssa_regitser_interface: ";
};

TEST_F(registration, of_an_empty_table_starts_the_service_of_none_does_not)
{
    const log_capture log(1);
    add(nullptr, -1, EMPTY);
    EXPECT_EQ(log.text(), op + "Invalid vexa diag drv.\n");
    EXPECT_EQ(request_client().fd, -1);
    add(&EMPTY, 0, EMPTY);
    ASSERT_TRUE(wait_for_service());
    EXPECT_EQ(ask_service(frame(10, 0)), frame(10, 4, std::string(4, '\xff')));
    alignas(void *) char bytes[sizeof(table) + 1]; /* a table may lie at any address, an odd one here */
    memcpy(bytes + 1, &table, sizeof(table));
    add(reinterpret_cast<const vexa_diag_drv *>(bytes + 1), 0, table);
    EXPECT_EQ(ask_service(frame(10, 0)), frame(10, 4, std::string(4, 0)));
}

TEST_F(registration, keeps_the_first_function_of_each_slot)
{
    const auto mounted = [&](int slot) {
        return op + "this interface has been mounted, offset:" + std::to_string(slot) + "\r\n";
    };
    const log_capture log(1);
    vexa_diag_drv expected = {};
    expected.send_packet = table.send_packet;
    EXPECT_EQ(vexa_tx_packet_init(expected.send_packet), 0);
    EXPECT_EQ(memcmp(&facmsg_vexa_diag_drv, &expected, sizeof(expected)), 0);

    vexa_diag_drv ends = {};
    ends.reserved_0[0] = ends.reserved_0[3] = expected.reserved_0[0] = expected.reserved_0[3] = other;
    ends.get_ex_speed_support = expected.get_ex_speed_support = [](ex_speed_support *) { return 0; };
    ends.send_packet = [](const pack_info *, const uint8_t *, uint32_t) { return -1; };
    add(&ends, 0, expected);
    EXPECT_EQ(log.text(), mounted(175));
    add(&ends, 0, expected);
    EXPECT_EQ(log.text(), mounted(175) + mounted(0) + mounted(3) + mounted(175) + mounted(216));
    EXPECT_TRUE(wait_for_service());
}

TEST_F(registration, can_be_repeated_when_the_service_could_not_start)
{
    const std::string refused = op + "Factory server init fail.\n";
    facmsg_vexa_diag_drv.reserved_0[5] = other; /* a failed start clears the table as well */
    const log_capture log(1);
    simulation::fail_next("pthread_create");
    add(&table, -1, EMPTY);
    simulation::fail_allocation(1);
    add(&table, -1, EMPTY);
    EXPECT_EQ(log.text(), "facmsg_server_init: Create factory ssa lib server fail.\n" + refused +
                              "facmsg_server_init: allocate memory for factory server fail.\n" + refused);
    add(&table, 0, table);
    EXPECT_TRUE(wait_for_service());
}

TEST_F(registration, waits_for_the_socket_s_folder)
{
    ASSERT_EQ(rmdir("tmp"), 0);
    const log_capture log(1);
    add(&table, 0, table);
    while (trace_count("wait 1s") < 3)
        std::this_thread::yield();
    ASSERT_EQ(mkdir("tmp", 0700), 0);
    ASSERT_TRUE(wait_for_service());
    const std::string attempt = "factory_ssa_lib_socket_create: bind socket[tmp/.factory_ssa_socket] fail, "
                                "errno=No such file or directory\n"
                                "factory_ssa_lib_server_thread_func: continue to create server socket.\r\n";
    EXPECT_EQ(log.text().substr(0, 2 * attempt.size()), attempt + attempt);
}
