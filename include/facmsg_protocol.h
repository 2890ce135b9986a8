/* SPDX-License-Identifier: MIT
 *
 * What travels over the socket: the frame header, the request types, and one record per request and reply.
 *
 * A connection carries one request and at most one reply, both framed alike: 8 header bytes, then payload_size bytes.
 * All words are 32 bits in the byte order of the machine. The reply is written over the request's payload, so a field
 * marked "in" comes back as it was sent, and so does every "out" field that the test did not get to: a station sends
 * the record zero-filled but for its "in" fields, at the full size of the reply.
 */
#ifndef FACMSG_PROTOCOL_H
#define FACMSG_PROTOCOL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Where the service listens, relative to the working directory of the host process and of the client alike. */
#define FACMSG_SOCKET_PATH "tmp/.factory_ssa_socket"

enum {
    FACMSG_MAX_PORTS = 256,    /* ports are numbered 1 to 256; every per-port array has this many entries */
    FACMSG_BUFFER_SIZE = 8096, /* one request with its header */
    FACMSG_MAX_PAYLOAD = 8088  /* larger payloads are answered FACMSG_REPLY_INCOMPLETE unread */
};

struct facmsg_header {
    uint32_t srv_type;     /* request or reply type */
    uint32_t payload_size; /* bytes that follow the header */
};

/* A request as a handler sees it. The payload follows the header without a gap, in a buffer of FACMSG_BUFFER_SIZE bytes
 * aligned for 32-bit words. */
struct facmsg_request {
    struct facmsg_header header;
};

/* Request types. A reply carries its request's type, except where noted. */
enum facmsg_request_type {
    FACMSG_PACKET_TEST = 0,         /* CPU loopback test of every matching port */
    FACMSG_1G_10G_SWITCH = 1,       /* sets the speed of the 1G/10G ports */
    FACMSG_10G_40G_SWITCH = 2,      /* not supported; the connection closes without a reply */
    FACMSG_FC_ETHER_SWITCH = 3,     /* reports the FC/Ethernet ports */
    FACMSG_COPPER_FIBER_SWITCH = 4, /* flips the medium of the combo ports */
    FACMSG_PORT_BROADCAST = 5,      /* one burst, then every port's FCS errors */
    FACMSG_PORT_POE = 6,            /* PoE ports */
    FACMSG_MSG_DEBUG = 7,           /* log level of this library */
    FACMSG_POE_DEBUG = 8,           /* debug level of the host's PoE driver; answered with type 9 */
    FACMSG_PORT_DEBUG = 9,          /* debug level of the host's port driver */
    FACMSG_ENTER_FACTORY = 10,      /* factory mode */
    FACMSG_FPGA_WRITE = 11,
    FACMSG_FPGA_READ = 12,
    FACMSG_PORT_HPOE = 13, /* high-power PoE ports, then PoE ports */
    FACMSG_PBOX_HPOE = 14, /* high-power PoE ports in a test box; answered with type 13 */
    FACMSG_POE_MCU_UPGRADE = 15,
    FACMSG_POE_MCU_VERSION = 16,
    FACMSG_POE_VOP = 17,
    FACMSG_PBOX_PACKET_TEST = 20, /* the packet test of the high-power ports in a test box */
    FACMSG_ESS_FLOW = 23,         /* traffic stress in port pairs */
    FACMSG_ESS_BC_FLOW = 24,      /* traffic stress by broadcast */
    FACMSG_ESS_SERPENTINE = 25,   /* traffic stress through a chain of all ports */
    FACMSG_ESS_SFI_PRBS = 26      /* PRBS run on the fiber ports */
};

/* Reply types that answer a request that no handler took; both come without a payload. */
enum facmsg_reply_type {
    FACMSG_REPLY_UNKNOWN = 21,   /* no such request type */
    FACMSG_REPLY_INCOMPLETE = 22 /* the header or the payload did not arrive whole */
};

/* A word of port_results: the port number in the upper half, its code in the lower. */
#define FACMSG_PORT_RESULT(port, code) (((uint32_t)(port) << 16) | (uint32_t)(code))
#define FACMSG_RESULT_PORT(word) ((uint32_t)(word) >> 16)
#define FACMSG_RESULT_CODE(word) ((uint32_t)(word)&0xFFFFu)

/* Per-port codes that the port tests share. */
enum facmsg_port_code {
    FACMSG_PORT_OK = 0,              /* passed; in a packet test that stopped early (2, 6): not tested */
    FACMSG_PORT_NO_LINK = 1,         /* no link; the port was skipped */
    FACMSG_PORT_TRANSMIT = 2,        /* a frame could not be sent; shows only when the last port with link could not
                                      * send, which ends the test uncounted: else the port ends as 3 to which its
                                      * frames would come back, itself or the other end of its cable */
    FACMSG_PORT_RECEIVE_COUNT = 3,   /* wrong receive count, or no phy id to read it by; never beside 2 */
    FACMSG_PORT_MEDIUM = 4,          /* the medium could not be read or switched */
    FACMSG_PORT_SET_STATUS = 6,      /* the speed, medium or duplex was refused; type 1: or the status is unreadable */
    FACMSG_PORT_NOT_STARTED = 7,     /* packet test: at every port: it could not start; beside 6: status unreadable,
                                      * else sending overwrites it. Broadcast: status unreadable */
    FACMSG_PORT_FCS_UNREADABLE = 11, /* the FCS error counter could not be read */
    FACMSG_PORT_UNREADABLE = 15      /* broadcast: neither the status nor the counter: 7 and 11 in one */
};

/* 7 FACMSG_MSG_DEBUG, 8 FACMSG_POE_DEBUG, 9 FACMSG_PORT_DEBUG: 8 bytes. */
struct debug_level_record {
    int32_t level;  /* in: the level to set; 0 is silent, above 0 shows errors, above 1 also traces */
    int32_t status; /* out: 0 done, -1 the driver lacks the function or refused (types 8 and 9 only) */
};

/* 10 FACMSG_ENTER_FACTORY: the request may be empty, the reply is 4 bytes. */
struct enter_factory_record {
    int32_t status; /* out: 0 done, -1 the driver lacks the function or refused */
};

/* 0 FACMSG_PACKET_TEST and 20 FACMSG_PBOX_PACKET_TEST: 1052 bytes. The test box takes, at a requested speed, only the
 * ports that have FACMSG_ABILITY_HPOE in the word of the requested medium. */
enum facmsg_packet_result {
    FACMSG_PACKET_PASS = 0,
    FACMSG_PACKET_FAIL = 1, /* a port failed, or the test did: all codes are 0 when only the wait for links did */
    FACMSG_PACKET_NOT_POSSIBLE = 8 /* driver functions missing, medium or duplex not valid, or no port matches */
};

struct packet_test_record {
    uint32_t result;     /* out: enum facmsg_packet_result */
    uint32_t unit;       /* in: switch unit, first argument of every driver port function */
    uint32_t any_speed;  /* in: not 0: take the ports with FACMSG_ABILITY_ANY_SPEED and leave their speed alone */
    uint32_t speed;      /* in: speed code to test at; codes 7, 8 and 9 are never forced */
    uint32_t duplex;     /* in: duplex code 0, 1 or 2; not looked at with any_speed */
    uint32_t medium;     /* in: FACMSG_MEDIUM_COPPER or FACMSG_MEDIUM_FIBER */
    uint32_t port_count; /* out: ports tested; written when there is at least one */
    uint32_t port_results[FACMSG_MAX_PORTS]; /* out: FACMSG_PORT_RESULT words, port_count of them, ports ascending;
                                              * the codes are enum facmsg_port_code */
};

/* 1 FACMSG_1G_10G_SWITCH, 3 FACMSG_FC_ETHER_SWITCH, 4 FACMSG_COPPER_FIBER_SWITCH: 1040 bytes. */
enum facmsg_switch_result {
    FACMSG_SWITCH_PASS = 0,
    FACMSG_SWITCH_FAIL = 1,        /* a port failed */
    FACMSG_SWITCH_NOT_POSSIBLE = 2 /* driver functions missing, or no port qualifies */
};

struct switch_test_record {
    uint32_t result;  /* out: enum facmsg_switch_result; type 3 leaves it alone when it succeeds */
    uint32_t unit;    /* in: switch unit */
    uint32_t setting; /* type 1: in: speed code to set; type 3: out: 0 the last listed port offers speed code 7, 8 or 9,
                       * 1 it does not; type 4: out: the medium just set on the last port that could be read */
    uint32_t port_count;                     /* out: ports listed; written when there is at least one */
    uint32_t port_results[FACMSG_MAX_PORTS]; /* out: FACMSG_PORT_RESULT words: OK, MEDIUM (type 4) or SET_STATUS (1) */
};

/* 5 FACMSG_PORT_BROADCAST: 3088 bytes. */
enum facmsg_broadcast_result {
    FACMSG_BROADCAST_PASS = 0,         /* every listed port had link and its counter was read; judge the counts */
    FACMSG_BROADCAST_NO_LINK = 1,      /* no listed port has link 1; the codes are bare, 0, 1 or 7 */
    FACMSG_BROADCAST_NOT_POSSIBLE = 2, /* driver functions missing, no port, or the burst could not be sent */
    FACMSG_BROADCAST_NO_MEMORY = 7,
    FACMSG_BROADCAST_NOT_BEGUN = 9, /* the switch did not go into its broadcast-test state */
    FACMSG_BROADCAST_FAIL = 11      /* a listed port had no link or an unreadable counter; a port with code 7 counts as
                                     * without link unless the driver left one in its status */
};

struct broadcast_test_record {
    uint32_t result;                         /* out: enum facmsg_broadcast_result */
    uint32_t unit;                           /* in: switch unit */
    uint32_t port_count;                     /* out: ports that have any ability */
    uint32_t port_results[FACMSG_MAX_PORTS]; /* out: FACMSG_PORT_RESULT words; without port numbers when the test ended
                                              * before the counters were read */
    uint32_t reserved;                       /* not written */
    uint64_t fcs_counts[FACMSG_MAX_PORTS];   /* out: FCS errors of the i-th listed port, where the counter was read */
} __attribute__((packed, aligned(4))); /* no gaps; like every record it asks for no more than a word's alignment */

/* 11 FACMSG_FPGA_WRITE, 12 FACMSG_FPGA_READ: 84 bytes. */
enum {
    FACMSG_FPGA_FAILED = 3, /* fpga_record.result */
    FACMSG_FPGA_MAX_WRITE = 32,
    FACMSG_FPGA_MAX_READ = 64
};

struct fpga_record {
    uint32_t result;     /* out: FACMSG_FPGA_FAILED; left alone on success */
    uint32_t fpga_port;  /* in: 1 or 2: which of the two switch ports that face the FPGA */
    uint32_t addr;       /* in: FPGA address */
    uint32_t len;        /* in: bytes, at most FACMSG_FPGA_MAX_WRITE or FACMSG_FPGA_MAX_READ; whole words are moved */
    uint32_t product_id; /* in: the device's product id; tells which ports face the FPGA */
    uint8_t data[FACMSG_FPGA_MAX_READ]; /* in (type 11) or out (type 12) */
};

/* 6 FACMSG_PORT_POE, 13 FACMSG_PORT_HPOE and 14 FACMSG_PBOX_HPOE: 2828 bytes. Types 13 and 14 list the high-power ports
 * first, then the PoE ports; a port of both kinds is listed twice. */
enum facmsg_poe_result {
    FACMSG_POE_PASS = 0,
    FACMSG_POE_FAIL = 1,        /* a check failed */
    FACMSG_POE_NOT_POSSIBLE = 2 /* driver functions missing, or no port */
};

/* Codes of the checks; 0 is pass. 17 and 19 carry detail in their upper half. */
enum facmsg_poe_code {
    FACMSG_POE_OFF_FAILED = 12,          /* power_off_code: switching off or reading the power failed */
    FACMSG_POE_LIMIT_FAILED = 13,        /* overload_code: setting or restoring the power limit failed */
    FACMSG_POE_STATE_UNREADABLE = 14,    /* state_code: the state query failed */
    FACMSG_POE_STATE_0 = 15,             /* state_code */
    FACMSG_POE_STATE_2 = 16,             /* state_code */
    FACMSG_POE_STATE_OTHER = 17,         /* state_code, type 6 also for 3 and 4; upper half: that of the state word */
    FACMSG_POE_OVERLOAD_UNREADABLE = 18, /* overload_code: the overload query failed */
    FACMSG_POE_NO_OVERLOAD = 19, /* overload_code: no overload at 3 W; upper half: lower half of the information word */
    FACMSG_POE_STILL_ON = 20,    /* power_off_code: power after switching off */
    FACMSG_POE_STATE_3 = 21,     /* state_code, types 13 and 14 only */
    FACMSG_POE_STATE_4 = 22      /* state_code, types 13 and 14 only */
};

enum { FACMSG_POE_CLASS_UNREADABLE = 255 };

struct poe_test_reply {
    uint32_t result;                       /* out: enum facmsg_poe_result */
    uint32_t unit;                         /* in: switch unit */
    uint32_t port_count;                   /* out: ports listed; type 14: the high-power ones only */
    uint8_t ports[FACMSG_MAX_PORTS];       /* out: port number of each entry, its low byte: port 256 shows as 0 */
    uint32_t state_code[FACMSG_MAX_PORTS]; /* out: power state; 0 when good */
    uint8_t pd_class[FACMSG_MAX_PORTS];    /* out: class of the powered device, low byte; read in a good state only */
    uint32_t overload_code[FACMSG_MAX_PORTS]; /* out: of the last attempt; checked in a good state only */
    uint8_t power_off_code[FACMSG_MAX_PORTS]; /* out: whether the power went off */
};

/* 15 FACMSG_POE_MCU_UPGRADE: 4 bytes, and 16 FACMSG_POE_MCU_VERSION: 12 bytes. */
enum facmsg_poe_mcu_result {
    FACMSG_POE_MCU_DONE = 0,
    FACMSG_POE_MCU_FAILED = 1,       /* the driver refused */
    FACMSG_POE_MCU_NOT_SUPPORTED = 2 /* the driver lacks the function */
};

struct poe_mcu_upgrade_reply {
    uint32_t result; /* out: enum facmsg_poe_mcu_result */
};

struct poe_mcu_ver_reply {
    uint32_t result;  /* out: enum facmsg_poe_mcu_result */
    uint32_t new_ver; /* out: firmware version available, coded as the driver does */
    uint32_t cur_ver; /* out: firmware version running */
};

/* 17 FACMSG_POE_VOP: 2316 bytes; PoE and high-power ports in ascending order. */
struct vop_test_reply {
    uint32_t result;                       /* out: enum facmsg_poe_result */
    uint32_t unit;                         /* in: switch unit */
    uint32_t port_count;                   /* out: ports listed */
    uint8_t ports[FACMSG_MAX_PORTS];       /* out: port number of each entry, its low byte: port 256 shows as 0 */
    uint32_t vop_status[FACMSG_MAX_PORTS]; /* out: 0 three queries succeeded, 1 one failed */
    uint32_t vop_value[FACMSG_MAX_PORTS];  /* out: what the last query measured; the unit is the host's */
};

/* The traffic stress tests. Their per-port arrays go by position in the port list: ports that have any ability (type
 * 26: any fiber ability), ascending. A repeated pass starts on a cleared reply: what no step writes is then 0 instead
 * of as sent. Send fail_stage as 0: no step writes 0 to it. */
enum facmsg_stress_result {
    FACMSG_STRESS_NOT_SUPPORTED = 1, /* driver functions missing */
    FACMSG_STRESS_NO_PORT = 2,
    FACMSG_STRESS_NO_MEMORY = 3
};

/* The step at which a stress test stopped; 0 when it passed. */
enum facmsg_stress_stage {
    FACMSG_STAGE_PASSED = 0,
    FACMSG_STAGE_SPEED = 4,            /* a speed was refused */
    FACMSG_STAGE_LINK = 5,             /* links did not come up and hold */
    FACMSG_STAGE_VLAN_SETUP = 6,       /* the test's VLANs could not be set up */
    FACMSG_STAGE_TRANSMIT = 7,         /* the CPU could not send */
    FACMSG_STAGE_VLAN_REMOVAL = 8,     /* the test's VLANs could not be removed */
    FACMSG_STAGE_STATISTICS = 9,       /* wrong counts or FCS errors, still in the last pass */
    FACMSG_STAGE_LOOPBACK = 10,        /* PHY loopback could not be set */
    FACMSG_STAGE_LOOPBACK_RESTORE = 11 /* PHY loopback could not be restored; type 24 has counted before */
};

/* The speed codes that a stress test chose. */
struct speed_choice {
    uint8_t copper;
    uint8_t ex_copper; /* extended-speed copper; 255 on a switch without such ports */
    uint8_t fiber;
};

enum { FACMSG_FLOW_SETTINGS = 3, FACMSG_FLOW_REPLY = 19 };

/* Reply of facmsg_flow_pressure_fun(), which no request type leads to: type 19, 2340 bytes. One row of each array a
 * speed setting. */
struct flow_pressure_reply {
    uint32_t result;                           /* out: enum facmsg_stress_result; as sent when the test ran */
    uint32_t unit;                             /* in: switch unit */
    uint32_t port_count;                       /* out: ports listed */
    uint32_t fail_stage[FACMSG_FLOW_SETTINGS]; /* out: 0 or 4 to 9 of enum facmsg_stress_stage */
    struct speed_choice speed_codes[FACMSG_FLOW_SETTINGS];        /* out */
    uint8_t port_down[FACMSG_FLOW_SETTINGS][FACMSG_MAX_PORTS];    /* out: had no link when the link wait failed */
    uint8_t port_fcs_err[FACMSG_FLOW_SETTINGS][FACMSG_MAX_PORTS]; /* out: counted FCS errors */
    uint8_t port_cnt_err[FACMSG_FLOW_SETTINGS][FACMSG_MAX_PORTS]; /* out: the pair is off: a port did not receive
                                                                   * exactly what its partner transmitted */
    uint8_t reserved[3];                                          /* not written */
};

/* 23 FACMSG_ESS_FLOW and 24 FACMSG_ESS_BC_FLOW: 3860 bytes. Counts are the low 32 bits of the switch's counters. */
struct ess_flow_reply {
    uint32_t result;                        /* out: enum facmsg_stress_result; as sent when the test ran */
    uint32_t unit;                          /* in: switch unit */
    uint32_t port_count;                    /* out: ports listed */
    uint32_t fail_stage;                    /* out: enum facmsg_stress_stage */
    struct speed_choice speed_codes;        /* out */
    uint8_t port_down[FACMSG_MAX_PORTS];    /* out: had no link when the link wait failed */
    uint8_t port_fcs_err[FACMSG_MAX_PORTS]; /* out: counted FCS errors */
    uint8_t port_cnt_err[FACMSG_MAX_PORTS]; /* out: received another number of frames than it transmitted */
    uint8_t reserved;                       /* not written */
    uint32_t in_pkts[FACMSG_MAX_PORTS];     /* out: frames received, where port_cnt_err is set */
    uint32_t ex_pkts[FACMSG_MAX_PORTS];     /* out: frames transmitted, where port_cnt_err is set */
    uint32_t fcs[FACMSG_MAX_PORTS];         /* out: FCS errors, where port_fcs_err is set */
};

/* 25 FACMSG_ESS_SERPENTINE: 4120 bytes. */
struct serpentine_flow_reply {
    uint32_t result;                        /* out: enum facmsg_stress_result; as sent when the test ran */
    uint32_t unit;                          /* in: switch unit */
    uint32_t port_count;                    /* out: ports listed */
    uint32_t fail_stage;                    /* out: enum facmsg_stress_stage */
    uint32_t cpu_send_cnt;                  /* out: frames the CPU sent, a multiple of 10000 */
    struct speed_choice speed_codes;        /* out */
    uint8_t port_down[FACMSG_MAX_PORTS];    /* out: had no link when the link wait failed */
    uint8_t port_ex_err[FACMSG_MAX_PORTS];  /* out: transmitted another number of frames than expected */
    uint8_t port_in_err[FACMSG_MAX_PORTS];  /* out: received another number of frames than expected */
    uint8_t port_fcs_err[FACMSG_MAX_PORTS]; /* out: counted FCS errors */
    uint8_t reserved;                       /* not written */
    uint32_t in_pkts[FACMSG_MAX_PORTS];     /* out: frames received, where port_in_err is set */
    uint32_t ex_pkts[FACMSG_MAX_PORTS];     /* out: frames transmitted, where port_ex_err is set */
    uint32_t fcs[FACMSG_MAX_PORTS];         /* out: FCS errors, where port_fcs_err is set */
};

/* 26 FACMSG_ESS_SFI_PRBS: 1040 bytes. */
enum facmsg_prbs_stage {
    FACMSG_PRBS_STAGE_SPEED = 4,
    FACMSG_PRBS_STAGE_LINK = 5,
    FACMSG_PRBS_STAGE_LOOPBACK = 6,
    FACMSG_PRBS_STAGE_LOOPBACK_RESTORE = 7
};

struct prbs_test_reply {
    uint32_t result;                        /* out: enum facmsg_stress_result; as sent when the test ran */
    uint32_t unit;                          /* in: switch unit */
    uint32_t port_count;                    /* out: fiber ports; written when there is at least one */
    uint32_t fail_stage;                    /* out: enum facmsg_prbs_stage; as sent when the test completed */
    uint32_t prbs_status[FACMSG_MAX_PORTS]; /* out: status after the run, as the driver codes it */
};

#ifdef __cplusplus
}
#endif

#endif
