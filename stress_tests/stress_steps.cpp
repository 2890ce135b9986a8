/* SPDX-License-Identifier: MIT
 *
 * From ports in any state to stable links.
 */
#include "stress.h"

#include <cstdlib>
#include <unistd.h>

#include "packet/test_ports.h"
#include "service/scoped.h"

constexpr int LINK_ATTEMPTS = 12;
constexpr int HOLD_CHECKS = 8;
constexpr unsigned LINK_PAUSE_S = 1;

/* Where a wait for links keeps what it reads. */
struct link_table {
    port_status_row *rows;
    uint32_t codes[FACMSG_MAX_PORTS]; /* of the last look at the ports; not 0: no link */
};

bool stop_at(const stress_run &run, uint32_t stage)
{
    *run.fail_stage = stage;
    return false;
}

int restart_ports(const stress_run &run, speed_index index)
{
    switch_ports(run.unit, run.ports, run.count, 0);
    const int ret = vexa_port_speed(run.unit, run.ports, run.count, index, run.speed_codes);
    if (ret != 0) {
        stop_at(run, FACMSG_STAGE_SPEED);
        return ret;
    }
    switch_ports(run.unit, run.ports, run.count, 1);
    sleep(ON_SETTLE_S);
    return 0;
}

bool restart_at_fastest(const stress_run &run)
{
    const int ret = restart_ports(run, FASTEST);
    if (ret != 0)
        log_as(run.op, LOG_ERROR, "set port speed ,copper_speed%d, ex_copper_speed%d, fiber_speed%d fail(ret = %d).\n",
               static_cast<int>(FASTEST.copper), static_cast<int>(FASTEST.ex_copper), static_cast<int>(FASTEST.fiber),
               ret);
    return ret == 0;
}

bool set_loopback(const stress_run &run, uint8_t mode)
{
    const auto refusal = set_phy_loopback(run.unit, run.ports, run.count, mode);
    if (refusal.ret != 0)
        log_as(run.op, LOG_ERROR, "set port phy loopback ,port%d fail(ret = %d).\n", static_cast<int>(refusal.port),
               refusal.ret);
    return refusal.ret == 0;
}

static bool links_up(const stress_run &run, link_table &links)
{
    return platform_get_port_link(run.unit, links.rows, links.codes, run.ports, static_cast<int>(run.count)) == 0;
}

/* Looks at the links again each second until they have held or one is down. */
static bool links_hold(const stress_run &run, link_table &links)
{
    for (int check = 1; check <= HOLD_CHECKS; check++) {
        sleep(LINK_PAUSE_S);
        if (!links_up(run, links)) {
            log_as(run.op, LOG_ERROR, "continue %d times get port link to down.\n", check);
            return false;
        }
    }
    return true;
}

static bool links_become_stable(const stress_run &run, link_table &links)
{
    for (int attempt = 1; attempt <= LINK_ATTEMPTS; attempt++) {
        unsigned pause_s = LINK_PAUSE_S;
        if (links_up(run, links)) {
            log_as(run.op, LOG_ERROR, "get port link to up on %d time.\n", attempt);
            if (links_hold(run, links))
                return true;
            pause_s = run.broken_hold_pause_s;
        }
        sleep(pause_s);
    }
    return false;
}

static void report_links_down(const stress_run &run, const link_table &links)
{
    for (uint32_t i = 0; i < run.count; i++) {
        if (links.codes[i] == FACMSG_PORT_OK)
            continue;
        if (run.port_down != nullptr)
            run.port_down[i] = 1;
        if (run.port_down_lines)
            log_as(run.op, LOG_ERROR, "port%d down.\n", static_cast<int>(i + 1));
    }
    log_as(run.op, LOG_ERROR, "port down.\n");
    stop_at(run, FACMSG_STAGE_LINK);
}

link_wait wait_for_links(const stress_run &run)
{
    const scoped_free rows(static_cast<port_status_row *>(calloc(run.count, sizeof(port_status_row))));
    if (rows.data == nullptr) {
        log_as(run.op, LOG_ERROR, "Allocate memory fail.\n");
        *run.result = FACMSG_STRESS_NO_MEMORY;
        return link_wait::NO_MEMORY;
    }
    link_table links = {rows.data, {}};
    if (links_become_stable(run, links))
        return link_wait::STABLE;
    report_links_down(run, links);
    return link_wait::FAILED;
}
