/* SPDX-License-Identifier: MIT
 *
 * The procedure that all PoE tests share.
 */
#include "poe.h"

#include <unistd.h>

#include "packet/test_ports.h"

constexpr int OVERLOAD_ATTEMPTS = 3;
constexpr unsigned OVERLOAD_PAUSE_S = 10;
constexpr unsigned OVERLOAD_SETTLE_S = 10;
constexpr unsigned OFF_SETTLE_S = 1;

static void read_classes(poe_group group, poe_test_reply *reply, const char *op)
{
    for (uint32_t k = group.first; k < group.end; k++) {
        if (reply->state_code[k] != 0)
            continue;
        uint32_t pd_class = 0;
        if (call(&drv::poe_get_pd_class, g_test_ports[k], &pd_class) == 0) {
            reply->pd_class[k] = static_cast<uint8_t>(pd_class);
            continue;
        }
        log_as(op, LOG_ERROR, "Get port%d poe pd class fail.\n", static_cast<int>(g_test_ports[k]));
        reply->result = FACMSG_POE_FAIL;
        reply->pd_class[k] = FACMSG_POE_CLASS_UNREADABLE;
    }
}

static bool overload_trips(uint32_t k, const poe_method &method, poe_test_reply *reply)
{
    for (int attempt = 1; method.check_overload(k, g_test_ports[k], reply) != 0; attempt++) {
        if (attempt == OVERLOAD_ATTEMPTS)
            return false;
        sleep(OVERLOAD_PAUSE_S);
    }
    return true;
}

static void check_overloads(poe_group group, const poe_method &method, poe_test_reply *reply)
{
    for (uint32_t k = group.first; k < group.end; k++)
        if (reply->state_code[k] == 0 && !overload_trips(k, method, reply))
            reply->result = FACMSG_POE_FAIL;
    sleep(OVERLOAD_SETTLE_S);
}

static void note_power_off(uint32_t k, uint8_t code, poe_test_reply *reply)
{
    reply->result = FACMSG_POE_FAIL;
    reply->power_off_code[k] = code;
}

static void switch_off(poe_group group, poe_test_reply *reply, const char *op)
{
    for (uint32_t k = group.first; k < group.end; k++) {
        if (call(&drv::poe_set_port_enable, g_test_ports[k], 0u) == 0)
            continue;
        log_as(op, LOG_ERROR, "Set port %d poe disable fail.\n", static_cast<int>(g_test_ports[k]));
        note_power_off(k, FACMSG_POE_OFF_FAILED, reply);
    }
    sleep(OFF_SETTLE_S);
}

static void check_power_off(poe_group group, poe_test_reply *reply, const char *op)
{
    for (uint32_t k = group.first; k < group.end; k++) {
        uint32_t power = 0;
        if (call(&drv::poe_get_power, g_test_ports[k], &power) != 0) {
            log_as(op, LOG_ERROR, "Get port %d poe power fail.\n", static_cast<int>(g_test_ports[k]));
            note_power_off(k, FACMSG_POE_OFF_FAILED, reply);
            continue;
        }
        log_as(op, LOG_TRACE, "Get port %d poe power:%d.\n", static_cast<int>(g_test_ports[k]),
               static_cast<int>(power));
        if (power != 0)
            note_power_off(k, FACMSG_POE_STILL_ON, reply);
    }
}

static int check_poe_states(poe_group group, poe_test_reply *reply)
{
    return facmsg_get_port_poe_status(static_cast<int>(group.end), reply->state_code);
}

static int check_hpoe_states(poe_group group, poe_test_reply *reply)
{
    return facmsg_get_port_hpoe_status(static_cast<int>(group.first), static_cast<int>(group.end), reply->state_code);
}

template <uint32_t restore_mw> static int check_hpoe_overload(uint32_t k, uint32_t port, poe_test_reply *reply)
{
    return port_hpoe_overload_test(k, port, reply, restore_mw);
}

const poe_method POE_METHOD = {check_poe_states, port_poe_overload_test};
const poe_method HPOE_METHOD = {check_hpoe_states, check_hpoe_overload<HPOE_RESTORE_LIMIT_MW>};
const poe_method HPOE_POE_METHOD = {check_hpoe_states, check_hpoe_overload<POE_RESTORE_LIMIT_MW>};

poe_group list_poe_ports(uint32_t unit, uint32_t ability, uint8_t *ports, uint32_t count, const char *op)
{
    const auto matches = [ability](const port_ability_row &row) { return ((row.copper | row.fiber) & ability) != 0; };
    const poe_group group = {count, list_ports(unit, TRACED_SCAN, matches, op, count)};
    for (uint32_t k = group.first; k < group.end; k++)
        ports[k] = static_cast<uint8_t>(g_test_ports[k]);
    return group;
}

void switch_poe_group(poe_group group, uint32_t enable)
{
    for (uint32_t k = group.first; k < group.end; k++)
        call(&drv::poe_set_port_enable, g_test_ports[k], enable);
}

void test_poe_group(poe_group group, const poe_method &method, poe_test_reply *reply, const char *op)
{
    if (method.check_states(group, reply) != 0)
        reply->result = FACMSG_POE_FAIL;
    read_classes(group, reply, op);
    check_overloads(group, method, reply);
    switch_off(group, reply, op);
    check_power_off(group, reply, op);
}
