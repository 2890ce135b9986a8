/* SPDX-License-Identifier: MIT
 *
 * What the three loopback stress tests share: which ports, the way to stable links in loopback, and the passes.
 */
#ifndef STRESS_TESTS_ESS_TEST_H
#define STRESS_TESTS_ESS_TEST_H

#include <cstring>
#include <unistd.h>

#include "facmsg_internal.h"
#include "stress_ports.h"

constexpr unsigned ON_SETTLE_S = 2;      /* after the ports are switched on */
constexpr unsigned TRAFFIC_S = 30;       /* while frames circulate */
constexpr unsigned COUNTER_SETTLE_S = 2; /* before the counters are read */

/* A test in progress: its ports, and where its reply keeps the outcome. */
struct ess_run {
    const char *op;
    uint32_t unit;
    const uint32_t *ports;
    uint32_t count;
    bool (*set_loopback)(const ess_run &run, uint8_t mode); /* logs a failure in the words of the test */
    unsigned broken_hold_pause_s;
    uint32_t *result;
    uint32_t *fail_stage;
    speed_choice *speed_codes;
    uint8_t *port_down;
};

/* Whether the driver has the functions that all loopback tests need and the test's own; logs in the test's name. */
bool ess_supported(const char *test_name, bool own_functions, const char *op);

/* Lists the ports that have any ability. */
uint32_t list_stress_ports(uint32_t unit, const char *op);

/* The usual way of setting every port's loopback mode. */
bool ess_set_loopback(const ess_run &run, uint8_t mode);

/* Notes the step at which a pass stopped. Always false. */
bool ess_stopped(const ess_run &run, facmsg_stress_stage stage);

/* The same for a step around the traffic, with its error line. */
bool ess_traffic_stopped(const ess_run &run, facmsg_stress_stage stage);

/* From any state to stable links in loopback, at the fastest speeds, with the counters cleared. False when it stopped.
 */
bool ess_prepare_ports(const ess_run &run);

/* Sets up the VLANs with set_vlans(1), sends, waits for traffic_s and removes them with set_vlans(0); both are 0 on
 * success. False when it stopped. */
template <class SetVlans, class Send>
bool ess_carry_traffic(const ess_run &run, SetVlans set_vlans, Send send, unsigned traffic_s)
{
    if (set_vlans(1) != 0)
        return ess_traffic_stopped(run, FACMSG_STAGE_VLAN_SETUP);
    if (send() != 0)
        return ess_traffic_stopped(run, FACMSG_STAGE_TRANSMIT);
    sleep(traffic_s);
    return set_vlans(0) == 0 || ess_traffic_stopped(run, FACMSG_STAGE_VLAN_REMOVAL);
}

/* Runs passes until one does not end with wrong counts, three at most; each starts on a cleared reply. A pass is false
 * when it stopped before the counts were judged. */
template <class Reply, class Pass> void ess_repeat(Reply *reply, Pass pass)
{
    constexpr int REPEATS = 2;
    for (int repeat = 0; pass() && reply->fail_stage == FACMSG_STAGE_STATISTICS && repeat < REPEATS; repeat++)
        memset(reply, 0, sizeof(*reply));
}

#endif
