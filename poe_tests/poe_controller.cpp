/* SPDX-License-Identifier: MIT
 *
 * The PoE controller: its firmware's versions and upgrade, and the VOP test, what it measures on each port while the
 * output is off.
 */
#include <cstddef>
#include <unistd.h>

#include "packet/test_ports.h"
#include "poe.h"

static_assert(sizeof(poe_mcu_upgrade_reply) == 4 && sizeof(poe_mcu_ver_reply) == 12);
static_assert(sizeof(vop_test_reply) == 2316);
static_assert(offsetof(vop_test_reply, vop_status) == 268 && offsetof(vop_test_reply, vop_value) == 1292);

constexpr int QUERIES = 3;
constexpr unsigned QUERY_PAUSE_S = 1;
constexpr unsigned SWITCH_SETTLE_S = 5;

static uint32_t get_versions(poe_mcu_ver_reply *reply, const char *op)
{
    if (!test_supported(slots_filled(&drv::poe_get_mcu_ver), op))
        return FACMSG_POE_MCU_NOT_SUPPORTED;
    const int ret = call(&drv::poe_get_mcu_ver, &reply->new_ver, &reply->cur_ver);
    log_as(op, LOG_TRACE, "vexa_drv_poe_get_mcu_ver return %d new_ver %d cur_ver %d.\n", ret,
           static_cast<int>(reply->new_ver), static_cast<int>(reply->cur_ver));
    if (ret == 0)
        return FACMSG_POE_MCU_DONE;
    log_as(op, LOG_ERROR, "vexa_drv_poe_get_mcu_ver return %d.\n", ret);
    return FACMSG_POE_MCU_FAILED;
}

static uint32_t upgrade(const char *op)
{
    if (!test_supported(slots_filled(&drv::poe_mcu_upg), op))
        return FACMSG_POE_MCU_NOT_SUPPORTED;
    const int ret = call(&drv::poe_mcu_upg);
    log_as(op, LOG_TRACE, "vexa_drv_poe_mcu_upg return %d.\n", ret);
    if (ret == 0)
        return FACMSG_POE_MCU_DONE;
    log_as(op, LOG_ERROR, "vexa_drv_poe_mcu_upg return %d.\n", ret);
    return FACMSG_POE_MCU_FAILED;
}

int facmsg_poe_mcu_ver_get_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<poe_mcu_ver_reply>(request);
    reply->result = get_versions(reply, __func__);
    return send_reply(fd, FACMSG_POE_MCU_VERSION, reply);
}

int facmsg_poe_mcu_upg_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<poe_mcu_upgrade_reply>(request);
    reply->result = upgrade(__func__);
    return send_reply(fd, FACMSG_POE_MCU_UPGRADE, reply);
}

/* ---- VOP ---- */

static bool vop_supported(const char *op)
{
    return test_supported(slots_filled(&drv::poe_get_vop_test_result, &drv::get_ability, &drv::poe_get_power_state,
                                       &drv::poe_set_port_enable),
                          op);
}

/* One query of entry k; the driver fails with -1 alone. */
static bool query(vop_test_reply *reply, uint32_t k, const char *op)
{
    const int ret = call(&drv::poe_get_vop_test_result, g_test_ports[k], &reply->vop_status[k], &reply->vop_value[k]);
    log_as(op, LOG_TRACE,
           "vexa_drv_poe_get_vop_test_result                     return %d port_id %d status %d value %d.\n", ret,
           static_cast<int>(g_test_ports[k]), static_cast<int>(reply->vop_status[k]),
           static_cast<int>(reply->vop_value[k]));
    reply->vop_status[k] = ret == -1;
    if (ret != -1)
        return true;
    log_as(op, LOG_ERROR, "vexa_drv_poe_get_vop_test_result return %d.\n", ret);
    return false;
}

static bool query_port(vop_test_reply *reply, uint32_t k, const char *op)
{
    for (int i = 0; i < QUERIES; i++) {
        if (!query(reply, k, op))
            return false;
        sleep(QUERY_PAUSE_S);
    }
    return true;
}

static uint32_t test_vop(vop_test_reply *reply, const char *op)
{
    if (!vop_supported(op))
        return FACMSG_POE_NOT_POSSIBLE;
    const poe_group all = list_poe_ports(reply->unit, FACMSG_ABILITY_POE | FACMSG_ABILITY_HPOE, reply->ports, 0, op);
    reply->port_count = all.end;
    if (all.end == 0)
        return FACMSG_POE_NOT_POSSIBLE;
    switch_poe_group(all, OFF);
    sleep(SWITCH_SETTLE_S);
    uint32_t result = FACMSG_POE_PASS;
    for (uint32_t k = 0; k < all.end; k++)
        if (!query_port(reply, k, op))
            result = FACMSG_POE_FAIL;
    switch_poe_group(all, ON);
    sleep(SWITCH_SETTLE_S);
    return result;
}

int facmsg_poe_vop_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<vop_test_reply>(request);
    reply->result = test_vop(reply, __func__);
    return send_reply(fd, FACMSG_POE_VOP, reply);
}
