/* SPDX-License-Identifier: MIT
 *
 * PHY loopback of all listed ports: mode 0 while a stress test runs, mode 1 afterwards.
 */
#ifndef STRESS_TESTS_PHY_LOOPBACK_H
#define STRESS_TESTS_PHY_LOOPBACK_H

#include "facmsg.h"

/* Sets every port's mode. 0, or -1 at the first port that refuses, which ends it, or without the driver function. */
int vexa_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode);

/* The same in the name of a test, which has its own words for a failure. */
bool set_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode, const char *op);

/* Prepares loopback with set_mode(mode), which is false on failure: mode 0, and the first time ever mode 1 and 0 again.
 * g_first_phy_loopback tells later tests that this was done. */
template <class SetMode> bool prepare_phy_loopback(SetMode set_mode)
{
    if (!set_mode(0))
        return false;
    if (g_first_phy_loopback == 1)
        return true;
    if (!set_mode(1) || !set_mode(0))
        return false;
    g_first_phy_loopback = 1;
    return true;
}

#endif
