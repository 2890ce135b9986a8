/* SPDX-License-Identifier: MIT
 *
 * What the stress tests share: their replies list ports by position only, and name the step at which a test stopped.
 */
#ifndef STATION_STRESS_REPORT_H
#define STATION_STRESS_REPORT_H

#include "facmsg.h"
#include "port_report.h"

namespace station
{

/* What sets the tests apart. */
struct stress_kind {
    const char *title;
    code_table stages;                       /* of fail_stage; 0 has no sentence */
    std::span<const uint32_t> judged_stages; /* a test that stops at one of them has judged all its ports */
    const char *unexplained;                 /* a failure at such a stage without a failed port */
    std::vector<column> columns;
};

/* The head of a reply. */
struct stress_head {
    uint32_t result;
    uint32_t unit;
    uint32_t port_count;
    uint32_t fail_stage; /* 0: the test ran to its end */
};

/* Names the ports of the reply, which has positions only: an ascending list as in 1-24,27. */
extern const option PORTS_OPTION;

/* Judges a reply. judge_entry fills the row of the port at a position, counted from 0. */
outcome judge_stress(const request &sent, const stress_kind &kind, const stress_head &head,
                     const std::function<void(port_outcome &row, uint32_t position)> &judge_entry);

} // namespace station

#endif
