/* SPDX-License-Identifier: MIT
 *
 * What the stress tests do to all listed ports alike. `ports` is a list of `count` port numbers.
 */
#ifndef STRESS_TESTS_STRESS_PORTS_H
#define STRESS_TESTS_STRESS_PORTS_H

#include "facmsg_internal.h"

/* The partner of list position i in a pairwise test: the next one, or itself at the end of an odd list. */
inline uint32_t partner_of(uint32_t i, uint32_t count)
{
    return i + 1 < count ? i + 1 : i;
}

/* Enables (1) or disables (0) every port. */
void switch_ports(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t on);

/* Puts every port into VLAN 1 (1) or takes it out (0). 0, or the first driver failure, which ends it. */
int vexa_port_vlan1(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t member);

/* Clears every port's frame counters. */
void vexa_clear_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count);

/* A wait for stable links: how it ended, and the link codes of its last look at the ports. */
enum class link_wait { STABLE, FAILED, NO_MEMORY };

struct link_codes {
    uint32_t code[FACMSG_MAX_PORTS]; /* not 0: no link */
};

/* Waits until every port has had link for 8 s without a break, at most 12 attempts. Pauses broken_hold_pause_s instead
 * of 1 s after an attempt whose links came up and broke. */
link_wait wait_for_stable_links(uint32_t unit, const uint32_t *ports, uint32_t count, unsigned broken_hold_pause_s,
                                link_codes *codes, const char *op);

#endif
