/* SPDX-License-Identifier: MIT
 *
 * Port 1 is healthy, port 2 loses the first frames of its first burst, port 3 has no link. Its answers depend on what
 * it is asked and nothing else, so that a finding can be repeated.
 */
#include "small_host.h"

#include <cstdio>
#include <unistd.h>

#include "facmsg.h"

static uint32_t sent;

void small_host_start()
{
    if (freopen("/dev/null", "w", stdout) == nullptr)
        __builtin_trap();
    vexa_diag_drv &table = facmsg_vexa_diag_drv;
    table.get_status = [](uint32_t, uint32_t port, port_status_row *row) {
        *row = {0, port != 3, 3, 0, 2, 0};
        return 0;
    };
    table.set_status = [](uint32_t, uint32_t, port_status_row *row) { return row->speed == 5 ? -1 : 0; };
    table.get_ability = [](uint32_t, uint32_t port, port_ability_row *row) {
        *row = {port <= 3 ? 0x60000FFFu : 0, port <= 2 ? 0x40000FFFu : 0};
        return port <= 3 || port > 250 ? 0 : -1;
    };
    table.get_port_phyid = [](uint32_t port, void *record) {
        *static_cast<uint32_t *>(record) = port + 0x100;
        return 0;
    };
    table.set_cpu_mac_addr = [](const uint8_t *) { return 0; };
    table.clear_cpu_mac_addr = [](const uint8_t *) { return 0; };
    table.port_on_off = [](uint32_t, uint32_t, uint32_t) { return 0; };
    table.set_factory_mode = [] { return 0; };
    table.set_port_debug_level = [](int32_t level) { return level == 9 ? -1 : 0; };
    table.set_poe_debug_level = [](int32_t level) { return level == 9 ? -1 : 0; };
    table.send_packet = [](const pack_info *info, const uint8_t *frame, uint32_t length) {
        if (info->phy_id != 0x102 || ++sent > 5)
            vexa_recv_packet(info, frame, length);
        return 0;
    };
}

void small_host_reset()
{
    sent = 0;
    facmsg_dbg = 0;
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

int __wrap_system(const char *)
{
    return 0;
}

int __wrap_unlink(const char *)
{
    return 0;
}
}
