/* SPDX-License-Identifier: MIT
 *
 * Judging stress tests by the switch's own counters. Flags are set to 1, never cleared; values are the counters' low 32
 * bits, written only beside a flag. All arrays go by list position and have room for FACMSG_MAX_PORTS. FCS errors flag
 * a port as well; a counter that cannot be read flags nothing by itself and counts as what the driver left, 0 at first.
 * Checks return 0 when all is well, else 1, with an error line for each finding.
 */
#ifndef STRESS_TESTS_STRESS_STAT_H
#define STRESS_TESTS_STRESS_STAT_H

#include "facmsg.h"

/* Pairs: each port has received what its partner transmitted; the last of an odd list what itself transmitted. */
int vexa_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t *fcs_err, uint8_t *cnt_err);

/* Each port has received as many frames as it transmitted. */
int vexa_ess_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count, ess_flow_reply *reply);

/* The first port has transmitted and received `send_count` frames, each later one what the port before it received
 * intact. */
int vexa_ess_serpentine_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t send_count,
                                  serpentine_flow_reply *reply);

/* The frames that the CPU received on a port since *count was read; the absolute number over 0. -1, and *count as it
 * was, when the port has no phy id. */
int vexa_ess_serpentine_cpu_recv_packet(uint32_t port, uint32_t *count);

/* Traces, in GBK, which ports failed, by list position from 1; or that all passed. */
void dump_err_ports(const ess_flow_reply *reply);

#endif
