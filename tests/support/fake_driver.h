/* SPDX-License-Identifier: MIT
 *
 * A switch at the driver table: keeps each port's state, writes every call into the trace, fails on order, and brings
 * frames that are sent back through the receive hook.
 */
#ifndef TESTS_SUPPORT_FAKE_DRIVER_H
#define TESTS_SUPPORT_FAKE_DRIVER_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "facmsg.h"

constexpr int NEVER = -1;

struct fake_port {
    port_ability_row ability = {};
    port_status_row status = {0xA0, 1, 1, 0, 2, 0xA5}; /* what get_status reports once the link is up */
    uint32_t phy_id = 0;
    int down_polls = 0;                  /* status reads that still find the link down, or NEVER up */
    int breaks_in = 0;                   /* this many reads later the link is down once more; 0: it holds */
    std::function<int(int)> copies = {}; /* copies of the nth frame (from 1) that come back; unset: 1 */
    int delay_waits = 0;                 /* waits that pass before a frame comes back */
    int sent = 0;                        /* frames sent so far */
};

/* Makes calls of a slot fail. */
struct fake_failure {
    std::string_view slot; /* its name; a literal */
    uint32_t port = 0;     /* only this port's calls; 0: any */
    int nth = 0;           /* only the nth such call from now on; 0: every one; -n: each nth */
    int value = -1;
    int seen = 0;
};

class fake_driver
{
  public:
    /* Fills the library's table with this driver's functions, and empties the trace. One at a time. */
    fake_driver();
    ~fake_driver();
    fake_driver(const fake_driver &) = delete;

    /* Adds a port whose phy id is 0x100 + number. */
    fake_port &add_port(uint32_t number, port_ability_row ability = {});

    std::map<uint32_t, fake_port> ports;
    std::vector<fake_failure> failures;
    /* What becomes of a frame, instead of coming back through the hook as its port's record says. */
    std::function<void(const pack_info &info, const uint8_t *frame, uint32_t length)> on_send;
    /* By name of slot: what it writes to its nth output (from 0); 0 without. */
    std::map<std::string_view, std::function<uint64_t(uint32_t port, int nth)>> answers;

    /* For the driver functions. */
    int enter(const std::string &slot, const std::string &arguments, uint32_t port = 0);
    fake_port *find(uint32_t number);
    void transmit(const pack_info &info, const uint8_t *frame, uint32_t length);
    void pass_wait();

  private:
    struct frame_under_way {
        int waits_left;
        pack_info info;
        std::vector<uint8_t> bytes;
    };
    std::vector<frame_under_way> under_way;
};

/* A table of functions that all lead to the present fake_driver. */
vexa_diag_drv fake_table();

#endif
