/* SPDX-License-Identifier: MIT
 *
 * The VLANs that lead stress traffic. All make every call whatever fails, and return all results ORed: 0 is success.
 */
#ifndef STRESS_TESTS_STRESS_VLAN_H
#define STRESS_TESTS_STRESS_VLAN_H

#include "facmsg.h"

/* A VLAN for each pair of ports: 100, 102, 104, … Sets them up, or removes them (enable 0). */
int vexa_ess_port_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

/* The chain: what enters port k untagged leaves through port k+1; the last port's VLAN leads the serpentine MAC out of
 * it. Sets it up, or removes it (enable 0). */
int vexa_ess_serpentine_vlan(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

/* A VLAN for each pair of ports by membership and PVID. -1 when the driver lacks either. No test calls it. */
int vexa_port_pvid(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t enable);

#endif
