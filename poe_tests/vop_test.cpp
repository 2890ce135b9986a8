/* SPDX-License-Identifier: MIT
 *
 * The VOP test: what the PoE controller measures on each port while the output is off.
 */
#include <cstddef>
#include <unistd.h>

#include "facmsg_internal.h"
#include "poe_group.h"

static_assert(sizeof(vop_test_reply) == 2316);
static_assert(offsetof(vop_test_reply, vop_status) == 268 && offsetof(vop_test_reply, vop_value) == 1292);

namespace
{

constexpr const char *OP = "facmsg_poe_vop_fun";
constexpr int QUERIES = 3;
constexpr unsigned QUERY_PAUSE_S = 1;
constexpr unsigned SWITCH_SETTLE_S = 5;
constexpr uint32_t OFF = 0;
constexpr uint32_t ON = 1;

bool supported()
{
    if (slots_filled(&drv::poe_get_vop_test_result, &drv::get_ability, &drv::poe_get_power_state,
                     &drv::poe_set_port_enable))
        return true;
    log_as(OP, LOG_ERROR, "Port test no support(interface is NULL).\n");
    return false;
}

/* One query of entry k; the driver fails with -1 alone. */
bool query(vop_test_reply *reply, uint32_t k)
{
    const int ret = call(&drv::poe_get_vop_test_result, g_test_ports[k], &reply->vop_status[k], &reply->vop_value[k]);
    log_as(OP, LOG_TRACE,
           "vexa_drv_poe_get_vop_test_result                     return %d port_id %d status %d value %d.\n", ret,
           static_cast<int>(g_test_ports[k]), static_cast<int>(reply->vop_status[k]),
           static_cast<int>(reply->vop_value[k]));
    reply->vop_status[k] = ret == -1;
    if (ret != -1)
        return true;
    log_as(OP, LOG_ERROR, "vexa_drv_poe_get_vop_test_result return %d.\n", ret);
    return false;
}

bool query_port(vop_test_reply *reply, uint32_t k)
{
    for (int i = 0; i < QUERIES; i++) {
        if (!query(reply, k))
            return false;
        sleep(QUERY_PAUSE_S);
    }
    return true;
}

uint32_t test_vop(vop_test_reply *reply)
{
    if (!supported())
        return FACMSG_POE_NOT_POSSIBLE;
    const poe_group all = list_poe_ports(reply->unit, FACMSG_ABILITY_POE | FACMSG_ABILITY_HPOE, reply->ports, 0, OP);
    reply->port_count = all.end;
    if (all.end == 0)
        return FACMSG_POE_NOT_POSSIBLE;
    switch_poe_group(all, OFF);
    sleep(SWITCH_SETTLE_S);
    uint32_t result = FACMSG_POE_PASS;
    for (uint32_t k = 0; k < all.end; k++)
        if (!query_port(reply, k))
            result = FACMSG_POE_FAIL;
    switch_poe_group(all, ON);
    sleep(SWITCH_SETTLE_S);
    return result;
}

} // namespace

int facmsg_poe_vop_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<vop_test_reply>(request);
    reply->result = test_vop(reply);
    return send_reply(fd, FACMSG_POE_VOP, reply);
}
