/* SPDX-License-Identifier: MIT
 *
 * The CPU loopback test. What a port sends has to come back into the switch, by plug or cable; a CPU MAC entry leads it
 * on to the CPU, where the receive hook counts it for the port it came in on.
 */
#include "port_test.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "packet/test_ports.h"
#include "packet/transmit.h"
#include "service/scoped.h"

constexpr int BURSTS_PER_ATTEMPT = 10;
constexpr uint32_t EXPECTED_FRAMES = BURSTS_PER_ATTEMPT * TEST_FRAMES_PER_BURST;
constexpr int LINK_POLLS = 150;
constexpr useconds_t LINK_POLL_US = 100000;
constexpr unsigned SETTLE_S = 2;
constexpr int COUNT_READS = 100; /* after the first */
constexpr useconds_t COUNT_READ_US = 10000;
constexpr int RETRIES = 4;

enum transmit_mode : uint32_t { MODE_FORCED_SPEED = 1, MODE_OWN_SPEED = 2 };

/* One run: the ports, what is asked of them, and its working storage, all in list order. */
struct port_test {
    const char *op; /* the whole test, in whose name every step logs */
    uint32_t unit, speed, duplex, medium;
    uint32_t mode;
    const uint32_t *ports;
    uint32_t *codes;
    int count;
    port_status_row *rows;
    uint32_t *current, *baseline;
    int retries_left;
    uint32_t result;
};

static bool get_links(port_test &test)
{
    return platform_get_port_link(test.unit, test.rows, test.codes, test.ports, test.count) == 0;
}

static void read_counts(port_test &test)
{
    platform_recv_packet(test.unit, test.codes, test.ports, test.count, test.current);
}

static bool force_speeds(port_test &test)
{
    bool all_set = true;
    for (int i = 0; i < test.count; i++) {
        port_status_row &row = test.rows[i];
        row.speed = test.speed;
        row.medium = test.medium;
        row.duplex = test.duplex;
        if (call(&drv::set_status, test.unit, test.ports[i], &row) == 0)
            continue;
        log_as(test.op, LOG_ERROR, "Set port(%d) speed(%d) duplex(%d) fail.\n", static_cast<int>(test.ports[i]),
               static_cast<int>(test.speed), static_cast<int>(test.duplex));
        test.codes[i] = FACMSG_PORT_SET_STATUS;
        all_set = false;
    }
    return all_set;
}

/* Forces speed, duplex and medium, with the ports off meanwhile where the host can do that. */
static bool change_speed(port_test &test)
{
    get_links(test);
    log_as(test.op, LOG_TRACE, "Change port speed.\n");
    switch_ports(test.unit, test.ports, static_cast<uint32_t>(test.count), 0);
    const bool all_set = force_speeds(test);
    if (slot(&drv::port_on_off) != nullptr) {
        switch_ports(test.unit, test.ports, static_cast<uint32_t>(test.count), 1);
        sleep(SETTLE_S);
    }
    return all_set;
}

/* Ports still without link afterwards keep their code and are skipped from then on. */
static void await_links(port_test &test)
{
    log_as(test.op, LOG_TRACE, "Wait for link up(2).\n");
    for (int poll = 0; poll < LINK_POLLS; poll++) {
        if (get_links(test))
            return;
        usleep(LINK_POLL_US);
    }
    log_as(test.op, LOG_ERROR, "Wait port link up(2) timeout.\n");
    test.result = 1;
}

static bool send_bursts(port_test &test)
{
    for (int burst = 0; burst < BURSTS_PER_ATTEMPT; burst++)
        if (platform_send_packet(test.unit, test.codes, test.ports, test.count, test.mode, test.mode) != 0)
            return false;
    return true;
}

static bool take_retry(port_test &test)
{
    if (test.retries_left == 0) {
        test.result = 1;
        return false;
    }
    test.retries_left--;
    log_as(test.op, LOG_ERROR, "Port packet test retry.\n");
    return true;
}

/* The first port from position `from` on whose count is off; those before it pass. */
static int find_wrong_count(port_test &test, int from)
{
    for (int i = from; i < test.count; i++) {
        if (test.codes[i] == FACMSG_PORT_NO_LINK)
            continue;
        if (test.current[i] != EXPECTED_FRAMES)
            return i;
        test.codes[i] = FACMSG_PORT_OK;
    }
    return test.count;
}

/* Reads the counts until all are right or the reads are used up. The position of the first wrong one. */
static int await_counts(port_test &test)
{
    for (int reads_left = COUNT_READS;; reads_left--) {
        read_counts(test);
        const int wrong = find_wrong_count(test, 0);
        if (wrong == test.count || reads_left == 0)
            return wrong;
        usleep(COUNT_READ_US);
        memcpy(test.current, test.baseline, static_cast<size_t>(test.count) * sizeof(*test.current));
    }
}

/* Judges the counts. True when another attempt is to be made. */
static bool check_counts(port_test &test)
{
    for (int i = await_counts(test); i < test.count; i = find_wrong_count(test, i + 1)) {
        log_as(test.op, LOG_ERROR, "Port%d:Recv packet num(%lu) is not equal to test number(%d).\n",
               static_cast<int>(test.ports[i]), static_cast<unsigned long>(test.current[i]),
               static_cast<int>(EXPECTED_FRAMES));
        test.codes[i] = FACMSG_PORT_RECEIVE_COUNT;
        if (take_retry(test))
            return true;
    }
    return false;
}

/* One attempt. True when another is to be made. */
static bool send_and_count(port_test &test)
{
    const size_t counts_size = static_cast<size_t>(test.count) * sizeof(*test.current);
    memset(test.current, 0, counts_size);
    read_counts(test);
    memcpy(test.baseline, test.current, counts_size);
    if (!send_bursts(test))
        return take_retry(test);
    return check_counts(test);
}

static void run(port_test &test, bool force_speed)
{
    if (force_speed && !change_speed(test)) {
        test.result = 1;
        return;
    }
    await_links(test);
    sleep(SETTLE_S);
    log_as(test.op, LOG_TRACE, "Port is link up, start packet test.\n");
    test.retries_left = RETRIES;
    while (send_and_count(test))
        continue;
}

/* Takes the working storage for as long as the run lasts; false when memory is short. */
static bool run_with_storage(port_test &test, bool force_speed)
{
    const auto count = static_cast<size_t>(test.count);
    const scoped_free rows(static_cast<port_status_row *>(calloc(count, sizeof(port_status_row))));
    const scoped_free current(rows.data != nullptr ? static_cast<uint32_t *>(calloc(count, sizeof(uint32_t)))
                                                   : nullptr);
    const scoped_free baseline(current.data != nullptr ? static_cast<uint32_t *>(calloc(count, sizeof(uint32_t)))
                                                       : nullptr);
    if (baseline.data == nullptr) {
        log_as(test.op, LOG_ERROR, "Allocate memory fail.\n");
        return false;
    }
    test.rows = rows.data;
    test.current = current.data;
    test.baseline = baseline.data;
    run(test, force_speed);
    return true;
}

/* Installs the CPU MAC entry for as long as the run lasts; false when the test could not start. */
static bool run_with_cpu_mac(port_test &test, bool force_speed)
{
    if (call(&drv::set_cpu_mac_addr, TEST_FRAME_DESTINATION) != 0) {
        log_as(test.op, LOG_ERROR, "Set L2 MAC address table fail.\n");
        return false;
    }
    const bool ran = run_with_storage(test, force_speed);
    call(&drv::clear_cpu_mac_addr, TEST_FRAME_DESTINATION);
    return ran;
}

uint32_t platform_port_test(uint32_t unit, uint32_t any_speed, uint32_t speed, uint32_t duplex, uint32_t medium,
                            uint32_t *port_results, const uint32_t *ports, uint32_t port_count)
{
    port_test test = {};
    test.op = __func__;
    test.unit = unit;
    test.speed = speed;
    test.duplex = duplex;
    test.medium = medium;
    test.mode = speed >= 7 && speed <= 9 ? MODE_OWN_SPEED : MODE_FORCED_SPEED;
    test.ports = ports;
    test.codes = port_results;
    test.count = static_cast<int>(port_count);

    if (run_with_cpu_mac(test, test.mode == MODE_FORCED_SPEED && any_speed == 0))
        return test.result;
    platform_set_port_status(port_results, test.count, FACMSG_PORT_NOT_STARTED);
    return 1;
}
