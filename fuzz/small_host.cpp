/* SPDX-License-Identifier: MIT
 *
 * Ports 1 and 2 are healthy, but port 2 loses its first frames; port 3 has link in unit 0 only. Answers depend on the
 * input and nothing else, so that a finding can be repeated.
 */
#include "small_host.h"

#include <cstdio>
#include <sys/time.h>
#include <unistd.h>

#include "facmsg.h"
#include "internal/facmsg_slots.h"

static uint32_t frames_sent, calls, failing_call, readings;
static time_t clock_s;

static int answer()
{
    return ++calls == failing_call ? -1 : 0;
}

/* Outputs take small values in turn. */
static void write(uint32_t *to)
{
    *to = ++readings % 5;
}

static void write(uint64_t *to)
{
    *to = ++readings % 5;
}

static void write(uint8_t *to)
{
    *to = ++readings % 2;
}

static void write(ex_speed_support *to)
{
    *to = {1, ++readings % 2 == 0, 1, 1};
}

template <class Input> static void write(Input) {}

template <class... Arguments> static void provide(int (*vexa_diag_drv::*slot)(Arguments...))
{
    facmsg_vexa_diag_drv.*slot = [](Arguments... arguments) {
        (write(arguments), ...);
        return answer();
    };
}

void small_host_start()
{
    if (freopen("/dev/null", "w", stdout) == nullptr)
        __builtin_trap();
#define PROVIDE(index, name, port) provide(&vexa_diag_drv::name);
    FACMSG_SLOTS(PROVIDE)
    vexa_diag_drv &table = facmsg_vexa_diag_drv;
    table.get_status = [](uint32_t unit, uint32_t port, port_status_row *row) {
        *row = {0, port != 3 || unit == 0, 3, 0, 2, 0};
        return answer();
    };
    table.get_ability = [](uint32_t, uint32_t port, port_ability_row *row) {
        *row = {port <= 3 ? 0x6E000FFFu : 0, port <= 2 ? 0x5E002FFFu : 0};
        return port <= 3 || port > 250 ? 0 : -1;
    };
    table.get_port_phyid = [](uint32_t port, void *record) {
        *static_cast<uint32_t *>(record) = port + 0x100;
        return answer();
    };
    table.send_packet = [](const pack_info *info, const uint8_t *frame, uint32_t length) {
        if (info->phy_id != 0x102 || ++frames_sent > 5)
            vexa_recv_packet(info, frame, length);
        return answer();
    };
}

void small_host_reset(uint8_t plan)
{
    frames_sent = calls = readings = 0;
    failing_call = plan / 2;
    clock_s = 0;
    facmsg_dbg = plan % 2 != 0 ? 2 : 0;
}

extern "C" {

unsigned __wrap_sleep(unsigned)
{
    return 0;
}

int __wrap_usleep(useconds_t)
{
    return 0;
}

int __wrap_gettimeofday(timeval *now, void *)
{
    *now = {clock_s += 20, 0}; /* two bursts of a sender that goes on for 30 s */
    return 0;
}

int __wrap_system(const char *)
{
    return 0;
}

int __wrap_unlink(const char *)
{
    return 0;
}
}
