/* SPDX-License-Identifier: MIT
 *
 * The driver table: everything this library can do to the switch.
 *
 * The host fills a `struct vexa_diag_drv` with its own functions and registers it with vexa_ssa_regitser_interface().
 * The library touches hardware through these slots and in no other way.
 *
 * Rules that hold for every slot unless its comment says otherwise:
 *   - 0 is success, any other value is failure;
 *   - the library calls it on its server thread, or on the thread that calls a handler or FPGA function directly; one
 *     call at a time;
 *   - pointers are valid for the duration of the call only; the host must not keep or free them;
 *   - a null slot means "this host does not provide the function". The library never calls through a null slot: the
 *     requests that need it are answered as not supported, or report the failure their own description names;
 *   - `unit` is the switch unit number of the request, passed on unchanged; `port` is a port number counted from 1.
 */
#ifndef FACMSG_DRIVER_H
#define FACMSG_DRIVER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Medium codes in port_status_row.medium. */
enum { FACMSG_MEDIUM_COPPER = 0, FACMSG_MEDIUM_FIBER = 1 };

/* Status of one port, read by get_status and given back to set_status with some words changed. The stress tests and the
 * PRBS run give set_status a record that is zero but for the speed: they ask for a speed and nothing else. */
struct port_status_row {
    uint32_t host_word_0; /* the host's own; handed back as get_status left it */
    uint32_t link;        /* 0 link down, else up; report 1: the broadcast test sends only from a port with exactly 1 */
    uint32_t speed;       /* speed code: 3 is 1G, 4 is 10G, the others are the host's */
    uint32_t medium;      /* FACMSG_MEDIUM_COPPER or FACMSG_MEDIUM_FIBER */
    uint32_t duplex;      /* duplex code: 0, 1 or 2 */
    uint32_t host_word_5; /* the host's own; handed back as get_status left it */
};

/* What one port can do, a bit mask per medium. In each word speed code s has the bit pair 2(s-1) for duplex code 1 and
 * 2(s-1)+1 for duplex code 2; the FACMSG_ABILITY_ bits mark kinds of ports. A word of 0 means: no such medium. */
struct port_ability_row {
    uint32_t copper;
    uint32_t fiber;
};

#define FACMSG_ABILITY_HPOE (UINT32_C(1) << 25)          /* high-power PoE port */
#define FACMSG_ABILITY_POE (UINT32_C(1) << 26)           /* PoE port */
#define FACMSG_ABILITY_MEDIUM_SWITCH (UINT32_C(1) << 27) /* in both words: the medium can be switched */
#define FACMSG_ABILITY_FC_ETHERNET (UINT32_C(1) << 28)   /* fiber word: FC/Ethernet port */
#define FACMSG_ABILITY_ANY_SPEED (UINT32_C(1) << 29)     /* takes part in the any-speed packet test */
#define FACMSG_ABILITY_DUPLEX_0 (UINT32_C(1) << 30)      /* required for a request with duplex code 0 */

/* Travels with every CPU frame, in both directions. */
struct pack_info {
    uint16_t zero;        /* 0 in every frame this library sends */
    uint16_t tx_selector; /* how the host is to transmit the frame: 1 for FPGA frames, the test's value otherwise */
    uint32_t phy_id;      /* of the sending or receiving port, as get_port_phyid reports it */
};

/* One transmit order. get_port_phyid is handed its address and writes the first word. */
struct port_packet_req {
    uint32_t phy_id;      /* out of get_port_phyid */
    uint32_t tx_selector; /* its low 16 bits go into the pack_info of each frame */
    uint32_t mode;        /* transmit mode, passed through to the host */
    uint32_t count;       /* receives the port's count when counts are read */
    uint32_t frame_count; /* frames to send */
};

/* Filled by get_ex_speed_support; each byte is 0 for no, anything else for yes. */
struct ex_speed_support {
    uint8_t is_support_ex_speed;  /* the switch has extended-speed copper ports */
    uint8_t is_support_ex_5G;     /* extended-speed copper ports run 5G */
    uint8_t is_support_ex_2500M;  /* extended-speed copper ports run 2.5G */
    uint8_t is_support_fiber_10G; /* fiber ports run 10G */
};

/* A slot whose meaning belongs to other users of the table. The library never calls it; it registers like any other. */
typedef void (*vexa_reserved_slot)(void);

enum { FACMSG_DRV_SLOTS = 217 };

/* The table: 217 function pointers with nothing between them, 868 bytes on a 32-bit host. It may lie at any address. A
 * plain array of 217 pointers with the same functions at the same indices is the same table. The number before each
 * member is its index. */
struct vexa_diag_drv {
    vexa_reserved_slot reserved_0[147];

    /* 147: switches a port's PoE output: enable 1 on, 0 off. */
    int (*poe_set_port_enable)(uint32_t port, uint32_t enable);
    /* 148: reads a port's PoE power state: low 16 bits the state number (1 is the only good one), high 16 bits detail.
     */
    int (*poe_get_power_state)(uint32_t port, uint32_t *power_state);
    /* 149: reads whether a port is in overload (flag 1) and a word of information that comes with it. */
    int (*poe_get_overload)(uint32_t port, uint8_t *overload, uint32_t *info);
    /* 150: sets a port's PoE power limit in milliwatts (3000, 30000 or 100000). */
    int (*poe_set_max_power)(uint32_t port, uint32_t limit_mw);
    /* 151: reads a port's present PoE output power; the unit is the host's, 0 means no power. */
    int (*poe_get_power)(uint32_t port, uint32_t *power);
    /* 152: reads the class of the powered device on a port; the low byte is reported. */
    int (*poe_get_pd_class)(uint32_t port, uint32_t *pd_class);

    vexa_reserved_slot reserved_153[10];

    /* 163: reads a port's status into *status. */
    int (*get_status)(uint32_t unit, uint32_t port, struct port_status_row *status);
    /* 164: applies the speed, medium and duplex codes of *status to a port. */
    int (*set_status)(uint32_t unit, uint32_t port, struct port_status_row *status);
    /* 165: reads a port's abilities into *ability. Called for ports 1 to 256; failure means: no such port. */
    int (*get_ability)(uint32_t unit, uint32_t port, struct port_ability_row *ability);
    /* 166: puts the switch into factory mode. */
    int (*set_factory_mode)(void);
    /* 167: writes the port's phy id into the first 32-bit word of *record and may read the words behind it: a struct
     * port_packet_req for test frames, 48 bytes that begin {phy id, length, operation, address} for FPGA frames. */
    int (*get_port_phyid)(uint32_t port, void *record);
    /* 168: from now on frames to this 6-byte MAC address are to reach the CPU, whatever port they come in on. */
    int (*set_cpu_mac_addr)(const uint8_t *mac);
    /* 169: undoes set_cpu_mac_addr for the same address. The result is not examined. */
    int (*clear_cpu_mac_addr)(const uint8_t *mac);
    /* 170: sets the debug level of the host's port driver; 0 is silent. */
    int (*set_port_debug_level)(int32_t level);

    vexa_reserved_slot reserved_171[2];

    /* 173: sets the debug level of the host's PoE driver; 0 is silent. */
    int (*set_poe_debug_level)(int32_t level);

    vexa_reserved_slot reserved_174[1];

    /* 175: transmits one frame of length bytes (destination MAC first, no FCS) out of the port that info names.
     * vexa_tx_packet_init() registers this slot alone. */
    int (*send_packet)(const struct pack_info *info, const uint8_t *frame, uint32_t length);
    /* 176: enables (1) or disables (0) a port. The result is not examined. */
    int (*port_on_off)(uint32_t unit, uint32_t port, uint32_t on);

    vexa_reserved_slot reserved_177[1];

    /* 178: puts the switch into its broadcast-test state. */
    int (*port_broadcast_begin)(uint32_t unit);
    /* 179: ends the broadcast-test state. The result is not examined. */
    int (*port_broadcast_end)(uint32_t unit);
    /* 180: reads a port's count of received frames with a wrong frame check sequence. */
    int (*get_port_fcs)(uint32_t unit, uint32_t port, uint64_t *fcs);
    /* 181: adds (1) or removes (0) a VLAN with two member ports, which may be the same one, each with a mode flag. The
     * serpentine chain also calls it once with VLAN 0, which must not fail. */
    int (*port_vlan_pair)(uint32_t unit, uint32_t port_a, uint32_t port_b, uint32_t vlan_id, uint32_t mode_a,
                          uint32_t mode_b, uint32_t add);
    /* 182: sets the VLAN that a port's untagged frames belong to. */
    int (*set_pvid)(uint32_t unit, uint32_t port, uint32_t vlan_id);
    /* 183: adds (1) or removes (0) a port to or from a VLAN. */
    int (*vlan)(uint32_t unit, uint32_t port, uint32_t vlan_id, uint32_t add);
    /* 184: adds (1) or removes (0) a static 6-byte MAC address of a VLAN on a port. */
    int (*vlan_static_mac)(uint32_t unit, uint32_t port, const uint8_t *mac, uint32_t vlan_id, uint32_t add);
    /* 185: starts (1) or stops (0) the PRBS run of a port; *arg holds 0. The result is not examined. */
    int (*begin_end_prbs)(uint32_t unit, uint32_t port, uint32_t start, uint32_t *arg);
    /* 186: reads and clears a port's PRBS status word. The result is not examined. */
    int (*get_clear_prbs_status)(uint32_t unit, uint32_t port, uint32_t *status);

    vexa_reserved_slot reserved_187[18];

    /* 205: reads the PoE controller's firmware versions: the one available and the one running. */
    int (*poe_get_mcu_ver)(uint32_t *new_ver, uint32_t *cur_ver);
    /* 206: upgrades the PoE controller's firmware; returns when that is done. */
    int (*poe_mcu_upg)(void);
    /* 207: reads a port's VOP test result. -1 is failure, every other value success. */
    int (*poe_get_vop_test_result)(uint32_t port, uint32_t *status, uint32_t *value);
    /* 208: puts a port into VLAN 1 (1) or takes it out (0). */
    int (*port_vlan1)(uint32_t unit, uint32_t port, uint32_t member);

    vexa_reserved_slot reserved_209[1];

    /* 210: sets a port's PHY loopback mode: 0 while a stress test runs, 1 afterwards. */
    int (*port_phy_loopback)(uint32_t unit, uint32_t port, uint32_t mode);
    /* 211: called once before the ports' speeds are set. The result is not examined. */
    int (*port_speed_prepare)(void);
    /* 212: reads a port's type: 1 copper, 9 and 10 extended-speed copper, others the host's. */
    int (*get_port_type)(uint32_t unit, uint32_t port, uint32_t *type);
    /* 213: reads a port's counts of frames received and transmitted. The result is not examined. */
    int (*get_port_stat)(uint32_t unit, uint32_t port, uint64_t *in_pkts, uint64_t *ex_pkts);
    /* 214: clears a port's frame counters. The result is not examined. */
    int (*clear_port_stat)(uint32_t unit, uint32_t port);

    vexa_reserved_slot reserved_215[1];

    /* 216: reads what speeds the switch supports beyond the usual. The result is not examined. */
    int (*get_ex_speed_support)(struct ex_speed_support *support);
} __attribute__((packed));

#ifdef __cplusplus
}
#endif

#endif
