/* SPDX-License-Identifier: MIT
 *
 * The PoE test requests: standard ports at once, high-power and standard ports in turn, or high-power ports alone.
 */
#include <cstddef>
#include <unistd.h>

#include "packet/test_ports.h"
#include "poe.h"

static_assert(sizeof(poe_test_reply) == 2828);
static_assert(offsetof(poe_test_reply, state_code) == 268 && offsetof(poe_test_reply, pd_class) == 1292);
static_assert(offsetof(poe_test_reply, overload_code) == 1548 && offsetof(poe_test_reply, power_off_code) == 2572);

constexpr unsigned SCAN_SETTLE_S = 5;
constexpr unsigned GROUP_SETTLE_S = 10;
constexpr unsigned ON_SETTLE_S = 10;

/* The two groups, one after the other in the list. */
struct poe_groups {
    poe_group hpoe;
    poe_group poe;
};

static poe_groups list_both_groups(poe_test_reply *reply, const char *op)
{
    const poe_group hpoe = list_poe_ports(reply->unit, FACMSG_ABILITY_HPOE, reply->ports, 0, op);
    const poe_group poe = list_poe_ports(reply->unit, FACMSG_ABILITY_POE, reply->ports, hpoe.end, op);
    return {hpoe, poe};
}

/* One group's output on, the other's off, and time to settle. */
static void power_hpoe_alone(const poe_groups &groups)
{
    switch_poe_group(groups.hpoe, ON);
    switch_poe_group(groups.poe, OFF);
    sleep(GROUP_SETTLE_S);
}

static void power_poe_alone(const poe_groups &groups)
{
    switch_poe_group(groups.hpoe, OFF);
    switch_poe_group(groups.poe, ON);
    sleep(GROUP_SETTLE_S);
}

static void switch_all_on(poe_group all)
{
    switch_poe_group(all, ON);
    sleep(ON_SETTLE_S);
}

static void test_poe(poe_test_reply *reply, const char *op)
{
    const poe_group all = list_poe_ports(reply->unit, FACMSG_ABILITY_POE, reply->ports, 0, op);
    reply->port_count = all.end;
    if (all.end == 0) {
        reply->result = FACMSG_POE_NOT_POSSIBLE;
        return;
    }
    sleep(SCAN_SETTLE_S);
    test_poe_group(all, POE_METHOD, reply, op);
    switch_all_on(all);
}

static void test_hpoe_then_poe(poe_test_reply *reply, const char *op)
{
    const poe_groups groups = list_both_groups(reply, op);
    reply->port_count = groups.poe.end;
    if (groups.poe.end == 0) {
        reply->result = FACMSG_POE_NOT_POSSIBLE;
        return;
    }
    power_hpoe_alone(groups);
    test_poe_group(groups.hpoe, HPOE_METHOD, reply, op);
    power_poe_alone(groups);
    test_poe_group(groups.poe, HPOE_POE_METHOD, reply, op);
    switch_all_on({0, groups.poe.end});
}

static void test_hpoe_alone(poe_test_reply *reply, const char *op)
{
    const poe_groups groups = list_both_groups(reply, op);
    reply->port_count = groups.hpoe.end;
    if (groups.poe.end == 0) {
        reply->result = FACMSG_POE_NOT_POSSIBLE;
        return;
    }
    power_hpoe_alone(groups);
    test_poe_group(groups.hpoe, HPOE_METHOD, reply, op);
    switch_all_on({0, groups.poe.end});
}

static bool supported(const char *op)
{
    return test_supported(slots_filled(&drv::poe_set_port_enable, &drv::get_ability, &drv::poe_get_power_state,
                                       &drv::poe_get_overload, &drv::poe_set_max_power, &drv::poe_get_power,
                                       &drv::poe_get_pd_class),
                          op);
}

static int answer(int fd, facmsg_request *request, uint32_t reply_type,
                  void (*test)(poe_test_reply *reply, const char *op), const char *op)
{
    const auto reply = payload_of<poe_test_reply>(request);
    reply->result = FACMSG_POE_PASS;
    if (supported(op))
        test(reply, op);
    else
        reply->result = FACMSG_POE_NOT_POSSIBLE;
    return send_reply(fd, reply_type, reply);
}

int facmsg_port_poe_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, FACMSG_PORT_POE, test_poe, __func__);
}

int facmsg_port_hpoe_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, FACMSG_PORT_HPOE, test_hpoe_then_poe, __func__);
}

/* Answered with the type of the test it is the first phase of. */
int facmsg_pbox_hpoe_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, FACMSG_PORT_HPOE, test_hpoe_alone, __func__);
}
