/* SPDX-License-Identifier: MIT
 *
 * Switching, clearing and waiting for all listed ports.
 */
#include "stress_ports.h"

#include <cstdlib>
#include <unistd.h>

#include "packet/port_link.h"
#include "service/scoped.h"

constexpr int LINK_ATTEMPTS = 12;
constexpr int HOLD_CHECKS = 8;
constexpr unsigned LINK_PAUSE_S = 1;

void switch_ports(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t on)
{
    for (uint32_t i = 0; i < count; i++)
        call(&drv::port_on_off, unit, ports[i], on);
}

int vexa_port_vlan1(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t member)
{
    int ret = 0;
    for (uint32_t i = 0; i < count && ret == 0; i++)
        ret = call(&drv::port_vlan1, unit, ports[i], member);
    return ret;
}

void vexa_clear_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count)
{
    for (uint32_t i = 0; i < count; i++) {
        call(&drv::clear_port_stat, unit, ports[i]);
        log_trace("clear port%d stat.\n", static_cast<int>(ports[i]));
    }
}

/* Looks at the links again each second until they have held or one is down. */
template <class LinksUp> static bool links_hold(LinksUp links_up, const char *op)
{
    for (int check = 1; check <= HOLD_CHECKS; check++) {
        sleep(LINK_PAUSE_S);
        if (!links_up()) {
            log_as(op, LOG_ERROR, "continue %d times get port link to down.\n", check);
            return false;
        }
    }
    return true;
}

link_wait wait_for_stable_links(uint32_t unit, const uint32_t *ports, uint32_t count, unsigned broken_hold_pause_s,
                                link_codes *codes, const char *op)
{
    const scoped_free rows(static_cast<port_status_row *>(calloc(count, sizeof(port_status_row))));
    if (rows.data == nullptr) {
        log_as(op, LOG_ERROR, "Allocate memory fail.\n");
        return link_wait::NO_MEMORY;
    }
    const auto links_up = [&] {
        return platform_get_port_link(unit, rows.data, codes->code, ports, static_cast<int>(count)) == 0;
    };
    for (int attempt = 1; attempt <= LINK_ATTEMPTS; attempt++) {
        unsigned pause_s = LINK_PAUSE_S;
        if (links_up()) {
            log_as(op, LOG_ERROR, "get port link to up on %d time.\n", attempt);
            if (links_hold(links_up, op))
                return link_wait::STABLE;
            pause_s = broken_hold_pause_s;
        }
        sleep(pause_s);
    }
    return link_wait::FAILED;
}
