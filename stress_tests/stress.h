/* SPDX-License-Identifier: MIT
 *
 * The steps that the stress tests are made of, in the order in which a test takes its ports through them: off, to their
 * speeds, on, into PHY loopback (flow pressure runs over cables instead), to stable links; counters cleared, VLANs set
 * up, frames sent; then the counters are judged.
 *
 * `ports` is a list of `count` port numbers; positions in it count from 0, and so do the arrays beside it, which have
 * room for FACMSG_MAX_PORTS. All of it runs on the thread that runs a request. What takes a stress_run logs in the
 * request's name, all else in its own.
 *
 * In the names of this room `ess` marks what belongs to the tests with the PHYs in loopback, requests 23 to 26, and
 * what is only theirs; names without it belong to flow pressure or to all.
 */
#ifndef STRESS_TESTS_STRESS_H
#define STRESS_TESTS_STRESS_H

#include "facmsg.h"

constexpr unsigned ON_SETTLE_S = 2;      /* after the ports are switched on */
constexpr unsigned TRAFFIC_S = 30;       /* while frames circulate */
constexpr unsigned COUNTER_SETTLE_S = 2; /* before the counters are read */
constexpr int MOST_PASSES = 3;           /* of a test whose counts are wrong */

/* A test in progress: its ports, and where its reply keeps the outcome. */
struct stress_run {
    const char *op; /* the request */
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

/* ---- Off, speeds, on ---- */

/* Rows of the speed tables, 0 to 2, one for each kind of port; a higher number is not a faster one for fiber. */
struct speed_index {
    uint32_t copper;
    uint32_t ex_copper;
    uint32_t fiber;
};

/* The fastest each kind of port has: the loopback and PRBS tests run at it. */
constexpr speed_index FASTEST = {2, 2, 1};

/* Ports off, speeds, ports on, and time to settle. 0, or vexa_port_speed's failure with the ports still off: the run
 * has stopped. */
int restart_ports(const stress_run &run, speed_index index);

/* The same at the fastest speeds, with an error line when the run stopped: then false. */
bool restart_at_fastest(const stress_run &run);

/* Sets every port to the speed that its kind has at these indices, and reports the codes in *choice, 255 for extended
 * copper that the switch does not have. What the ports can do must stand in g_port_ability. A port whose type cannot be
 * read keeps its speed, one of no known kind gets that of the port before it in the list. 0, or 1 after an error line
 * at the first port that refuses, which ends it. */
int vexa_port_speed(uint32_t unit, const uint32_t *ports, uint32_t count, speed_index index, speed_choice *choice);

/* ---- PHY loopback: mode 0 while a stress test runs, mode 1 afterwards ---- */

/* Sets every port's loopback mode. False after an error line at the first port that refuses. */
bool set_loopback(const stress_run &run, uint8_t mode);

/* The same in its own name: 0, or -1 when a port refuses or the driver lacks the function. */
int vexa_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode);

/* What both set. The first port that refused, with the driver's result, ends it; {0, 0}: none did. No log. */
struct loopback_refusal {
    uint32_t port;
    int ret;
};
loopback_refusal set_phy_loopback(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t mode);

/* ---- Links ---- */

enum class link_wait { STABLE, FAILED, NO_MEMORY };

/* Waits until every port has had link for 8 s without a break, at most 12 attempts. Unless the links are STABLE the run
 * has stopped, with the ports down or the shortage of memory in the reply. */
link_wait wait_for_links(const stress_run &run);

/* ---- Counters and VLANs: none of these waits; results are the driver's ---- */

/* Clears every port's frame counters; failures are ignored. */
void vexa_clear_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count);

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

/* ---- Frames: lengths in bytes, without the FCS; a pattern of PATTERN_SIZE bytes repeats to the frame's end ---- */

constexpr uint32_t PATTERN_SIZE = 8;
constexpr uint8_t SERPENTINE_MAC[6] = {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/* Builders: each returns a new frame that the caller frees, or null after an error line. */

/* A broadcast frame of VLAN 1 with 64, 128, 256, 512 or 1518 bytes; other lengths are refused. A frame of 64 bytes is
 * filled with the 16-bit pattern, a longer one with zeros. */
uint8_t *vexa_packet_vlan1(uint32_t phy_id, uint32_t length, uint16_t pattern);

/* A broadcast frame of the VLAN, untagged for VLAN 0, filled with the pattern. */
uint8_t *vexa_ess_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern, uint32_t vlan_id);

/* A frame to SERPENTINE_MAC of the type that the receive hook counts, filled with the pattern. */
uint8_t *vexa_ess_serpentine_packet(uint32_t phy_id, uint32_t length, const uint8_t *pattern);

/* Senders, through the CPU port: 0, or -1 when a frame could not be built or sent, which ends them, or when a phy id
 * could not be read, which does not. */

/* The eight frames of the flow pressure test, out of one port. */
int vexa_send_packet_pressure_use_cpsp(uint32_t port);

/* The sixteen frames of the loopback tests out of each port of every pair, in the pair's VLAN; the last port of an odd
 * list has its VLAN to itself. */
int vexa_send_ess_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count);

/* The sixteen frames of the loopback tests out of the first port, in VLAN 1. */
int vexa_send_ess_bc_packet_pressure_use_cpsp(const uint32_t *ports, uint32_t count);

/* Serpentine frames out of the first port, in bursts of 10000 until 30 s have passed. *send_count receives their
 * number, and is left alone when sending failed. */
int vexa_send_ess_serpentine_flow_use_cpsp(const uint32_t *ports, uint32_t count, uint32_t *send_count);

/* ---- Judging by the switch's own counters. Flags are set to 1, never cleared; values are the counters' low 32 bits,
 * written only beside a flag. FCS errors flag a port as well; a counter that cannot be read flags nothing by itself and
 * counts as what the driver left, 0 at first. Checks return 0 when all is well, else 1, with an error line for each
 * finding. ---- */

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
