/* SPDX-License-Identifier: MIT
 *
 * The steps that the stress tests share. Every test takes its ports the same way: off, to their speeds, on, into PHY
 * loopback (flow pressure runs over cables instead), to stable links; then it clears the counters, lets the traffic run
 * and judges the counters.
 *
 * In the names of this room `ess` marks what belongs to the tests with the PHYs in loopback, requests 23 to 26, and
 * what is only theirs; names without it belong to flow pressure or to all.
 */
#ifndef STRESS_TESTS_STRESS_STEPS_H
#define STRESS_TESTS_STRESS_STEPS_H

#include "facmsg_internal.h"
#include "stress_speed.h"

constexpr unsigned ON_SETTLE_S = 2;      /* after the ports are switched on */
constexpr unsigned TRAFFIC_S = 30;       /* while frames circulate */
constexpr unsigned COUNTER_SETTLE_S = 2; /* before the counters are read */
constexpr int MOST_PASSES = 3;           /* of a test whose counts are wrong */

/* A test in progress: its ports, and where its reply keeps the outcome. */
struct stress_run {
    const char *op; /* the request, in whose name the steps log */
    uint32_t unit;
    const uint32_t *ports;
    uint32_t count;
    uint32_t *result;
    uint32_t *fail_stage;
    speed_choice *speed_codes;
    uint8_t *port_down;               /* null: not reported */
    unsigned broken_hold_pause_s = 1; /* after links that came up and broke */
    bool port_down_lines = false;     /* an error line for each port without link, too */
};

/* Notes the stage at which a run stopped. Always false. */
bool stop_at(const stress_run &run, uint32_t stage);

/* Ports off, speeds, ports on, and time to settle. 0, or vexa_port_speed's failure with the ports still off: the run
 * has stopped. */
int restart_ports(const stress_run &run, speed_index index);

/* The same at the fastest speeds, with an error line when the run stopped: then false. */
bool restart_at_fastest(const stress_run &run);

/* Sets every port's loopback mode. False after an error line at the first port that refuses. */
bool set_loopback(const stress_run &run, uint8_t mode);

enum class link_wait { STABLE, FAILED, NO_MEMORY };

/* Waits until every port has had link for 8 s without a break, at most 12 attempts. Unless the links are STABLE the run
 * has stopped, with the ports down or the shortage of memory in the reply. */
link_wait wait_for_links(const stress_run &run);

#endif
