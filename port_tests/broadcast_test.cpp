/* SPDX-License-Identifier: MIT
 *
 * The broadcast test: one burst into a switch that floods, then every port's FCS errors. The station judges the counts.
 */
#include <cstddef>
#include <cstdlib>
#include <unistd.h>

#include "packet/test_ports.h"
#include "packet/transmit.h"
#include "service/scoped.h"

static_assert(sizeof(broadcast_test_record) == 3088);
static_assert(offsetof(broadcast_test_record, port_results) == 12);
static_assert(offsetof(broadcast_test_record, fcs_counts) == 1040);

constexpr unsigned BURST_SETTLE_S = 10;
constexpr unsigned END_SETTLE_S = 3;
constexpr uint32_t BURST_MODE = 1;

static bool supported(const char *op)
{
    return test_supported(slots_filled(&drv::port_broadcast_begin, &drv::port_broadcast_end, &drv::get_ability,
                                       &drv::get_status, &drv::get_port_fcs),
                          op);
}

/* The first port whose link word is exactly 1; 0 when there is none. */
static uint32_t source_port(const port_status_row *rows, uint32_t count, const char *op)
{
    for (uint32_t i = 0; i < count; i++)
        if (rows[i].link == 1)
            return g_test_ports[i];
    log_as(op, LOG_ERROR, "No link port.\n");
    return 0;
}

static bool begin_broadcast(uint32_t unit, const char *op)
{
    if (call(&drv::port_broadcast_begin, unit) == 0)
        return true;
    log_as(op, LOG_ERROR, "Port broadcast test fail.\n");
    return false;
}

static bool send_burst(uint32_t unit, uint32_t source, const char *op)
{
    uint32_t state = FACMSG_PORT_OK;
    if (platform_send_packet(unit, &state, &source, 1, BURST_MODE, BURST_MODE) == 0)
        return true;
    log_as(op, LOG_ERROR, "Port broadcast test fail.\n");
    return false;
}

/* False when the port's counter could not be read. */
static bool read_fcs(broadcast_test_record &record, uint32_t position, const char *op)
{
    uint64_t fcs = 0;
    if (call(&drv::get_port_fcs, record.unit, g_test_ports[position], &fcs) != 0) {
        record.port_results[position] |= FACMSG_PORT_FCS_UNREADABLE;
        return false;
    }
    log_as(op, LOG_ERROR, "Port%d FCS number %lld.\n", static_cast<int>(g_test_ports[position]),
           static_cast<long long>(fcs));
    record.fcs_counts[position] = fcs;
    return true;
}

static uint32_t read_all_fcs(broadcast_test_record &record, const port_status_row *rows, const char *op)
{
    uint32_t result = FACMSG_BROADCAST_PASS;
    for (uint32_t i = 0; i < record.port_count; i++) {
        record.port_results[i] |= FACMSG_PORT_RESULT(g_test_ports[i], 0);
        if (rows[i].link == 0 || !read_fcs(record, i, op))
            result = FACMSG_BROADCAST_FAIL;
    }
    return result;
}

/* The burst and the counters, in a switch that has begun its broadcast-test state. */
static uint32_t run_broadcast(broadcast_test_record &record, const port_status_row *rows, uint32_t source,
                              const char *op)
{
    if (!send_burst(record.unit, source, op)) {
        call(&drv::port_broadcast_end, record.unit);
        return FACMSG_BROADCAST_NOT_POSSIBLE;
    }
    sleep(BURST_SETTLE_S);
    const uint32_t result = read_all_fcs(record, rows, op);
    call(&drv::port_broadcast_end, record.unit);
    sleep(END_SETTLE_S);
    return result;
}

static uint32_t test_broadcast(broadcast_test_record &record, const char *op)
{
    if (!supported(op))
        return FACMSG_BROADCAST_NOT_POSSIBLE;
    record.port_count = list_ports(record.unit, TRACED_SCAN, has_any_ability, op);
    if (record.port_count == 0)
        return FACMSG_BROADCAST_NOT_POSSIBLE;
    const scoped_free rows(static_cast<port_status_row *>(calloc(record.port_count, sizeof(port_status_row))));
    if (rows.data == nullptr) {
        log_as(op, LOG_ERROR, "Allocate memory fail.\n");
        return FACMSG_BROADCAST_NO_MEMORY;
    }
    platform_get_port_link(record.unit, rows.data, record.port_results, g_test_ports,
                           static_cast<int>(record.port_count));
    const uint32_t source = source_port(rows.data, record.port_count, op);
    if (source == 0)
        return FACMSG_BROADCAST_NO_LINK;
    if (!begin_broadcast(record.unit, op))
        return FACMSG_BROADCAST_NOT_BEGUN;
    return run_broadcast(record, rows.data, source, op);
}

int facmsg_port_broadcast_fun(int fd, facmsg_request *request)
{
    const auto record = payload_of<broadcast_test_record>(request);
    record->result = test_broadcast(*record, __func__);
    return send_reply(fd, FACMSG_PORT_BROADCAST, record);
}
