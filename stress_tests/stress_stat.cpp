/* SPDX-License-Identifier: MIT
 *
 * Reading and comparing the counters of the listed ports.
 */
#include "stress.h"

#include "packet/test_ports.h"

using ull = unsigned long long;

struct traffic {
    uint64_t in_pkts;
    uint64_t ex_pkts;
};

/* A port's FCS errors. */
struct fcs_reading {
    uint64_t errors; /* as the driver left them */
    bool any;        /* they could be read, and there are some */
};

static fcs_reading read_fcs(uint32_t unit, uint32_t port, const char *op)
{
    uint64_t errors = 0;
    const int ret = call(&drv::get_port_fcs, unit, port, &errors);
    const int number = static_cast<int>(port);
    log_as(op, LOG_TRACE, "Get port%d stat fcs = %llu.\n", number, ull{errors});
    const bool any = ret == 0 && errors != 0;
    if (any)
        log_as(op, LOG_ERROR, "Get port%d stat fcs = %llu.\n", number, ull{errors});
    return {errors, any};
}

/* Flags the errors of a port, with their number. 1 when there are any, else 0. */
static int flag_fcs(const fcs_reading &fcs, uint8_t *flag, uint32_t *value)
{
    if (!fcs.any)
        return 0;
    *flag = 1;
    *value = static_cast<uint32_t>(fcs.errors);
    return 1;
}

/* The counters stay 0 when the driver writes none. */
static traffic read_traffic(uint32_t unit, uint32_t port)
{
    traffic counts = {};
    call(&drv::get_port_stat, unit, port, &counts.in_pkts, &counts.ex_pkts);
    return counts;
}

static traffic read_and_trace_traffic(uint32_t unit, uint32_t port, const char *op)
{
    const traffic counts = read_traffic(unit, port);
    log_as(op, LOG_TRACE, "Get port%d stat in_pkts = %llu ex_pkts = %llu.\n", static_cast<int>(port),
           ull{counts.in_pkts}, ull{counts.ex_pkts});
    return counts;
}

/* Whether two ports of a pair received what the other transmitted. */
static bool pair_balances(uint32_t unit, uint32_t port_1, uint32_t port_2, const char *op)
{
    const int number_1 = static_cast<int>(port_1);
    const int number_2 = static_cast<int>(port_2);
    const traffic one = read_traffic(unit, port_1);
    log_as(op, LOG_TRACE, "Get port%d stat in_pkts1 = %llu ex_pkts1 = %llu.\n", number_1, ull{one.in_pkts},
           ull{one.ex_pkts});
    const traffic two = read_traffic(unit, port_2);
    log_as(op, LOG_TRACE, "Get port%d stat in_pkts2 = %llu ex_pkts2 = %llu.\n", number_2, ull{two.in_pkts},
           ull{two.ex_pkts});
    if (one.in_pkts == two.ex_pkts && two.in_pkts == one.ex_pkts)
        return true;
    log_as(op, LOG_ERROR,
           "Get port%d stat in_pkts1 = %llu ex_pkts1 = %llu port%d stat in_pkts2 = %llu ex_pkts2 = %llu.\n", number_1,
           ull{one.in_pkts}, ull{one.ex_pkts}, number_2, ull{two.in_pkts}, ull{two.ex_pkts});
    return false;
}

int vexa_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count, uint8_t *fcs_err, uint8_t *cnt_err)
{
    int result = 0;
    for (uint32_t i = 0; i < count; i += 2) {
        const uint32_t partner = partner_of(i, count);
        for (uint32_t j = i; j <= partner; j++)
            if (read_fcs(unit, ports[j], __func__).any)
                result = fcs_err[j] = 1;
        if (!pair_balances(unit, ports[i], ports[partner], __func__)) {
            cnt_err[i] = cnt_err[partner] = 1;
            result = 1;
        }
    }
    return result;
}

int vexa_ess_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count, ess_flow_reply *reply)
{
    int result = 0;
    for (uint32_t i = 0; i < count; i++) {
        result |= flag_fcs(read_fcs(unit, ports[i], __func__), &reply->port_fcs_err[i], &reply->fcs[i]);
        const traffic counts = read_and_trace_traffic(unit, ports[i], __func__);
        if (counts.in_pkts == counts.ex_pkts)
            continue;
        log_error("Get port%d stat in_pkts = %llu ex_pkts = %llu.\n", static_cast<int>(ports[i]), ull{counts.in_pkts},
                  ull{counts.ex_pkts});
        reply->port_cnt_err[i] = 1;
        reply->in_pkts[i] = static_cast<uint32_t>(counts.in_pkts);
        reply->ex_pkts[i] = static_cast<uint32_t>(counts.ex_pkts);
        result = 1;
    }
    return result;
}

int vexa_ess_serpentine_port_stat(uint32_t unit, const uint32_t *ports, uint32_t count, uint32_t send_count,
                                  serpentine_flow_reply *reply)
{
    int result = 0;
    auto expected = static_cast<uint64_t>(int64_t{static_cast<int32_t>(send_count)});
    for (uint32_t i = 0; i < count; i++) {
        const int port = static_cast<int>(ports[i]);
        const fcs_reading fcs = read_fcs(unit, ports[i], __func__);
        result |= flag_fcs(fcs, &reply->port_fcs_err[i], &reply->fcs[i]);
        const traffic counts = read_and_trace_traffic(unit, ports[i], __func__);
        if (counts.ex_pkts != expected) {
            reply->port_ex_err[i] = 1;
            reply->ex_pkts[i] = static_cast<uint32_t>(counts.ex_pkts);
            result = 1;
            log_error("Get port%d stat ex_pkts = %llu. last_send_cnt = %llu\n", port, ull{counts.ex_pkts},
                      ull{expected});
        }
        if (counts.in_pkts != expected) {
            reply->port_in_err[i] = 1;
            reply->in_pkts[i] = static_cast<uint32_t>(counts.in_pkts);
            result = 1;
            log_error("Get port%d stat in_pkts = %llu. last_send_cnt = %llu\n", port, ull{counts.in_pkts},
                      ull{expected});
        }
        expected = counts.in_pkts - fcs.errors;
    }
    return result;
}

int vexa_ess_serpentine_cpu_recv_packet(uint32_t port, uint32_t *count)
{
    const int number = static_cast<int>(port);
    log_trace("Recv packet, port id:%d.\n", number);
    port_packet_req request = {};
    if (!get_phy_id(port, &request, __func__))
        return -1;
    if (vexa_get_recv_packet_number(request.phy_id, &request.count) != 0) {
        log_error("port(%d) recv packet fail.\n", number);
        return -1;
    }
    *count = request.count - *count;
    log_trace("port(%d) recv packet:%lu.\n", number, static_cast<unsigned long>(request.count));
    return 0;
}

/* The texts are GBK: the consoles of the production line show nothing else. */
void dump_err_ports(const ess_flow_reply *reply)
{
    bool failed = false;
    for (uint32_t i = 0; i < reply->port_count; i++)
        if (reply->port_fcs_err[i] != 0) {
            failed = true; /* port %d received frames with FCS errors */
            log_trace("      \xB6\xCB\xBF\xDA%d \xBD\xD3\xCA\xD5\xB5\xBD"
                      "fcs\xB4\xED\xB0\xFC\r\n",
                      static_cast<int>(i + 1));
        }
    for (uint32_t i = 0; i < reply->port_count; i++)
        if (reply->port_cnt_err[i] != 0) {
            failed = true; /* port %d: received and transmitted counts differ */
            log_trace("      \xB6\xCB\xBF\xDA%d \xCA\xD5\xB7\xA2\xBC\xC6\xCA\xFD\xB2\xBB\xD2\xBB\xD6\xC2\r\n",
                      static_cast<int>(i + 1));
        }
    if (failed) /* port test failed */
        log_trace("      \xB6\xCB\xBF\xDA\xB2\xE2\xCA\xD4\xCA\xA7\xB0\xDC\r\n");
    else /* all ports passed */
        log_trace("      \xCB\xF9\xD3\xD0\xB6\xCB\xBF\xDA\xB2\xE2\xCA\xD4\xCD\xA8\xB9\xFD\r\n");
}
