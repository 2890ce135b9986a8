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
 * aligned for 64-bit words. */
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
    FACMSG_PORT_OK = 0,            /* link up, frames sent, or passed */
    FACMSG_PORT_NO_LINK = 1,       /* no link; the port was skipped */
    FACMSG_PORT_TRANSMIT = 2,      /* a frame could not be sent */
    FACMSG_PORT_RECEIVE_COUNT = 3, /* wrong receive count, or no phy id to read it by */
    FACMSG_PORT_SET_STATUS = 6,    /* the speed, medium or duplex was refused */
    FACMSG_PORT_NOT_STARTED = 7    /* link state unreadable, or the test could not start */
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

/* 0 FACMSG_PACKET_TEST: 1052 bytes. */
enum facmsg_packet_result {
    FACMSG_PACKET_PASS = 0,
    FACMSG_PACKET_FAIL = 1,
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

#ifdef __cplusplus
}
#endif

#endif
