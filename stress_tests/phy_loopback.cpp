/* SPDX-License-Identifier: MIT
 *
 * PHY loopback, port by port.
 */
#include "phy_loopback.h"

#include "facmsg_internal.h"

uint8_t g_first_phy_loopback;

int vexa_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode)
{
    if (slot(&drv::port_phy_loopback) == nullptr) {
        log_error("vexa_phy_loopback no support(port_phy_loopback:%p).\n", slot_address(&drv::port_phy_loopback));
        return -1;
    }
    for (uint32_t i = 0; i < count; i++) {
        const int ret = call(&drv::port_phy_loopback, unit, ports[i], uint32_t{mode});
        if (ret != 0) {
            log_error("set port phy loopback port%d fail(ret = %d).\n", static_cast<int>(ports[i]), ret);
            return -1;
        }
    }
    return 0;
}

bool set_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode, const char *op)
{
    for (uint32_t i = 0; i < count; i++) {
        const int ret = call(&drv::port_phy_loopback, unit, ports[i], uint32_t{mode});
        if (ret != 0) {
            log_as(op, LOG_ERROR, "set port phy loopback ,port%d fail(ret = %d).\n", static_cast<int>(ports[i]), ret);
            return false;
        }
    }
    return true;
}
