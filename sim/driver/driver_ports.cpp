/* SPDX-License-Identifier: MIT
 *
 * Driver functions: status, ability, switch and counters of ports.
 */
#include "driver_slots.h"

#include <cstring>

namespace sim
{

int slots::get_status(board &b, uint32_t, uint32_t number, port_status_row *status)
{
    return with_port(b, number, [&](port &found) {
        *status = found.status();
        return 0;
    });
}

int slots::set_status(board &b, uint32_t, uint32_t number, port_status_row *status)
{
    return with_port(b, number, [&](port &found) { return b.set_status(found, *status) ? 0 : -1; });
}

int slots::get_ability(board &b, uint32_t, uint32_t number, port_ability_row *ability)
{
    return with_port(b, number, [&](port &found) {
        *ability = found.config().ability;
        return 0;
    });
}

int slots::get_port_phyid(board &b, uint32_t number, void *record)
{
    return with_port(b, number, [&](port &found) {
        memcpy(record, &found.config().phy_id, sizeof(uint32_t));
        return 0;
    });
}

int slots::port_on_off(board &b, uint32_t, uint32_t number, uint32_t on)
{
    return with_port(b, number, [&](port &found) {
        b.switch_port(found, on != 0);
        return 0;
    });
}

int slots::get_port_fcs(board &b, uint32_t, uint32_t number, uint64_t *fcs)
{
    return with_port(b, number, [&](port &found) {
        *fcs = found.counters.fcs_errors;
        return 0;
    });
}

int slots::get_port_stat(board &b, uint32_t, uint32_t number, uint64_t *in_pkts, uint64_t *ex_pkts)
{
    return with_port(b, number, [&](port &found) {
        *in_pkts = found.counters.in_pkts;
        *ex_pkts = found.counters.ex_pkts;
        return 0;
    });
}

int slots::clear_port_stat(board &b, uint32_t, uint32_t number)
{
    return with_port(b, number, [&](port &found) {
        found.counters = {};
        return 0;
    });
}

} // namespace sim
