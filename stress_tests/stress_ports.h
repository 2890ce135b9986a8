/* SPDX-License-Identifier: MIT
 *
 * What the stress tests set on all listed ports alike: counters, PHY loopback, and the VLANs that lead their traffic.
 * `ports` is a list of `count` port numbers, whose positions count from 0. Results are the driver's unless said
 * otherwise. They log in their own name, wait for nothing, and run on the thread that runs a request, like all of this
 * room.
 */
#ifndef STRESS_TESTS_STRESS_PORTS_H
#define STRESS_TESTS_STRESS_PORTS_H

#include "facmsg.h"

/* The partner of list position i in a pairwise test: the next one, or itself at the end of an odd list. */
inline uint32_t partner_of(uint32_t i, uint32_t count)
{
    return i + 1 < count ? i + 1 : i;
}

/* The VLANs of the tests begin here. */
constexpr uint32_t FIRST_VLAN = 100;

/* The VLAN of the pair that list position i belongs to: 100, 102, 104, … */
inline uint32_t pair_vlan(uint32_t i)
{
    return FIRST_VLAN + i / 2 * 2;
}

/* Clears every port's frame counters; failures are ignored. */
void vexa_clear_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count);

/* ---- PHY loopback: mode 0 while a stress test runs, mode 1 afterwards ---- */

/* The first port that refused a loopback mode, with the driver's result; {0, 0}: none did. */
struct loopback_refusal {
    uint32_t port;
    int ret;
};

/* Sets every port's mode; the first refusal ends it. */
loopback_refusal set_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode);

/* The same with error lines: 0, or -1 when a port refuses or the driver lacks the function. */
int vexa_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode);

/* ---- VLANs ---- */

/* Puts every port into VLAN 1 (1) or takes it out (0). 0, or the first driver failure, which ends it. */
int vexa_port_vlan1(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t member);

/* The others make every call whatever fails, and return all results ORed: 0 is success. They set the VLANs up, or
 * remove them (enable 0). */

/* A VLAN for each pair of ports. */
int vexa_ess_port_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

/* The chain: what enters port k untagged leaves through port k+1; the last port's VLAN leads the serpentine MAC out of
 * it. VLANs 100 to 100 + count; when they are removed the ports' PVIDs are 1. Nothing to do for an empty list. */
int vexa_ess_serpentine_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

/* A VLAN for each pair of ports by membership and PVID. -1 when the driver lacks either. No test calls it. */
int vexa_port_pvid(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

#endif
