/* SPDX-License-Identifier: MIT
 *
 * The PoE controller's firmware: its versions, and its upgrade.
 */
#include "facmsg_internal.h"

static_assert(sizeof(poe_mcu_upgrade_reply) == 4 && sizeof(poe_mcu_ver_reply) == 12);

static uint32_t get_versions(poe_mcu_ver_reply *reply, const char *op = __builtin_FUNCTION())
{
    if (slot(&drv::poe_get_mcu_ver) == nullptr) {
        log_as(op, LOG_ERROR, "Port test no support(interface is NULL).\n");
        return FACMSG_POE_MCU_NOT_SUPPORTED;
    }
    const int ret = call(&drv::poe_get_mcu_ver, &reply->new_ver, &reply->cur_ver);
    log_as(op, LOG_TRACE, "vexa_drv_poe_get_mcu_ver return %d new_ver %d cur_ver %d.\n", ret,
           static_cast<int>(reply->new_ver), static_cast<int>(reply->cur_ver));
    if (ret == 0)
        return FACMSG_POE_MCU_DONE;
    log_as(op, LOG_ERROR, "vexa_drv_poe_get_mcu_ver return %d.\n", ret);
    return FACMSG_POE_MCU_FAILED;
}

static uint32_t upgrade(const char *op = __builtin_FUNCTION())
{
    if (slot(&drv::poe_mcu_upg) == nullptr) {
        log_as(op, LOG_ERROR, "Port test no support(interface is NULL).\n");
        return FACMSG_POE_MCU_NOT_SUPPORTED;
    }
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
    reply->result = get_versions(reply);
    return send_reply(fd, FACMSG_POE_MCU_VERSION, reply);
}

int facmsg_poe_mcu_upg_fun(int fd, facmsg_request *request)
{
    const auto reply = payload_of<poe_mcu_upgrade_reply>(request);
    reply->result = upgrade();
    return send_reply(fd, FACMSG_POE_MCU_UPGRADE, reply);
}
