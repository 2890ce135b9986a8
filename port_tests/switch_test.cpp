/* SPDX-License-Identifier: MIT
 *
 * The speed and medium switch tests: each lists the ports of one kind and switches, or just reports, them.
 */
#include <cstddef>
#include <unistd.h>

#include "packet/test_ports.h"

static_assert(sizeof(switch_test_record) == 1040 && offsetof(switch_test_record, port_results) == 16);

constexpr uint32_t SPEED_1G_AND_10G = UINT32_C(1) << 5 | UINT32_C(1) << 7;
constexpr uint32_t SPEED_7_8_OR_9 = UINT32_C(1) << 13 | UINT32_C(1) << 15 | UINT32_C(1) << 17;
constexpr unsigned MEDIUM_SETTLE_S = 5;

/* What sets the tests apart. */
struct switch_kind {
    uint32_t type;
    scan_log log;
    bool (*takes_part)(const port_ability_row &row);
    void (*act)(switch_test_record &record, uint32_t count); /* on the listed ports */
};

static bool supported(const char *op)
{
    if (slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status))
        return true;
    log_as(op, LOG_ERROR, "Port test no support(get_ability:%p, get_status:%p, set_status:%p).\n",
           slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status));
    return false;
}

/* The number of listed ports; 0 with the reason logged when the test is not possible. */
static uint32_t list_switch_ports(const switch_test_record &record, const switch_kind &kind, const char *op)
{
    if (!supported(op))
        return 0;
    const uint32_t count = list_ports(record.unit, kind.log, kind.takes_part, op);
    if (count == 0)
        log_as(op, LOG_TRACE, "No support port speed for testing.\n");
    return count;
}

static int answer(int fd, facmsg_request *request, const switch_kind &kind, const char *op)
{
    const auto record = payload_of<switch_test_record>(request);
    const uint32_t count = list_switch_ports(*record, kind, op);
    if (count == 0) {
        record->result = FACMSG_SWITCH_NOT_POSSIBLE;
    } else {
        record->port_count = count;
        kind.act(*record, count);
    }
    return send_reply(fd, kind.type, record);
}

/* Sets every port's speed code, without waiting for link; each result is OK or SET_STATUS. 0 when every port was set,
 * else 1. */
static uint32_t platform_port_speed_switch(uint32_t unit, uint32_t speed, uint32_t *port_results, const uint32_t *ports,
                                           uint32_t count)
{
    uint32_t result = 0;
    for (uint32_t i = 0; i < count; i++) {
        port_status_row status = {};
        bool ok = call(&drv::get_status, unit, ports[i], &status) == 0;
        if (ok) {
            status.speed = speed;
            ok = call(&drv::set_status, unit, ports[i], &status) == 0;
        }
        port_results[i] = ok ? FACMSG_PORT_OK : FACMSG_PORT_SET_STATUS;
        if (!ok)
            result = 1;
    }
    return result;
}

/* Sets every port to its other medium, then waits 5 s; each result is OK or MEDIUM. *medium receives what was set on
 * the last port whose status could be read. 0 when every port was set, else 1. */
static uint32_t platform_port_medium_switch(uint32_t unit, uint32_t *medium, uint32_t *port_results,
                                            const uint32_t *ports, uint32_t count)
{
    uint32_t result = 0;
    for (uint32_t i = 0; i < count; i++) {
        port_status_row status = {};
        bool ok = call(&drv::get_status, unit, ports[i], &status) == 0;
        if (ok) {
            log_trace("Get port%d medium %d.\n", static_cast<int>(ports[i]), static_cast<int>(status.medium));
            status.medium = status.medium == FACMSG_MEDIUM_COPPER ? FACMSG_MEDIUM_FIBER : FACMSG_MEDIUM_COPPER;
            *medium = status.medium;
            ok = call(&drv::set_status, unit, ports[i], &status) == 0;
        }
        port_results[i] = ok ? FACMSG_PORT_OK : FACMSG_PORT_MEDIUM;
        if (!ok)
            result = 1;
    }
    sleep(MEDIUM_SETTLE_S);
    return result;
}

static void switch_speed(switch_test_record &record, uint32_t count)
{
    record.result = platform_port_speed_switch(record.unit, record.setting, record.port_results, g_test_ports, count);
    add_port_numbers(record.port_results, count);
}

static void switch_medium(switch_test_record &record, uint32_t count)
{
    record.result = platform_port_medium_switch(record.unit, &record.setting, record.port_results, g_test_ports, count);
    add_port_numbers(record.port_results, count);
}

/* The last listed port decides the flag. */
static void report_fc_ports(switch_test_record &record, uint32_t count)
{
    for (uint32_t i = 0; i < count; i++) {
        record.setting = (g_port_ability[g_test_ports[i] - 1].fiber & SPEED_7_8_OR_9) == 0;
        record.port_results[i] = FACMSG_PORT_RESULT(g_test_ports[i], FACMSG_PORT_OK);
    }
}

const switch_kind SPEED = {
    FACMSG_1G_10G_SWITCH, QUIET_SCAN,
    [](const port_ability_row &row) { return (row.fiber & SPEED_1G_AND_10G) == SPEED_1G_AND_10G; }, switch_speed};

const switch_kind FC_ETHERNET = {
    FACMSG_FC_ETHER_SWITCH, TRACED_SCAN,
    [](const port_ability_row &row) { return (row.fiber & FACMSG_ABILITY_FC_ETHERNET) != 0; }, report_fc_ports};

const switch_kind MEDIUM = {
    FACMSG_COPPER_FIBER_SWITCH, QUIET_SCAN,
    [](const port_ability_row &row) { return (row.copper & row.fiber & FACMSG_ABILITY_MEDIUM_SWITCH) != 0; },
    switch_medium};

int facmsg_1g_10g_switch_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, SPEED, __func__);
}

int facmsg_10g_40g_switch_fun(int, facmsg_request *)
{
    log_error("Do not support.\n");
    return 0;
}

int facmsg_fc_ether_switch_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, FC_ETHERNET, __func__);
}

int facmsg_copper_fiber_switch_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, MEDIUM, __func__);
}
