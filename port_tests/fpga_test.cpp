/* SPDX-License-Identifier: MIT
 *
 * The FPGA write and read requests. Both addresses of FPGA frames lead to the CPU for as long as one takes.
 */
#include <cstddef>

#include "facmsg_internal.h"
#include "packet/fpga.h"

static_assert(sizeof(fpga_record) == 84 && offsetof(fpga_record, data) == 20);

/* What sets the two requests apart. */
struct fpga_direction {
    uint32_t type;
    const char *name;
    const char *success;
    uint32_t max_length;
    int (*access)(fpga_record &record);
};

const fpga_direction WRITE = {
    FACMSG_FPGA_WRITE, "write", "fpga write success", FACMSG_FPGA_MAX_WRITE, [](fpga_record &record) {
        return vexa_fpga_buf_write(record.fpga_port, record.addr, record.data, record.len, record.product_id);
    }};

const fpga_direction READ = {
    FACMSG_FPGA_READ, "read", "fpga read fun success", FACMSG_FPGA_MAX_READ, [](fpga_record &record) {
        return vexa_fpga_buf_read(record.fpga_port, record.addr, record.data, record.len, record.product_id);
    }};

static bool access_possible(const fpga_record &record, const fpga_direction &direction, const char *op)
{
    if (!slots_filled(&drv::set_cpu_mac_addr, &drv::clear_cpu_mac_addr)) {
        log_as(op, LOG_ERROR, "set cpu mac addr inter/%s is null\n", direction.name);
        return false;
    }
    return fpga_access_valid(record.fpga_port, record.len, direction.max_length, op);
}

/* On failure an entry that went in stays in. */
static bool install_mac_entries(const char *op)
{
    if (call(&drv::set_cpu_mac_addr, FPGA_SOURCE) == 0 && call(&drv::set_cpu_mac_addr, FPGA_DESTINATION) == 0) {
        log_as(op, LOG_TRACE, "Set L2 MAC-FPGA address table success\n");
        return true;
    }
    log_as(op, LOG_ERROR, "Set L2 MAC-FPGA address table fail.\n");
    return false;
}

static void remove_mac_entries()
{
    call(&drv::clear_cpu_mac_addr, FPGA_SOURCE);
    call(&drv::clear_cpu_mac_addr, FPGA_DESTINATION);
}

static bool access_fpga(fpga_record &record, const fpga_direction &direction, const char *op)
{
    if (!access_possible(record, direction, op) || !install_mac_entries(op))
        return false;
    const bool done = direction.access(record) == 0;
    if (done)
        log_as(op, LOG_TRACE, "%s\n", direction.success);
    else
        log_as(op, LOG_ERROR, "fpga %s err\n", direction.name);
    remove_mac_entries();
    return done;
}

static int answer(int fd, facmsg_request *request, const fpga_direction &direction, const char *op)
{
    const auto record = payload_of<fpga_record>(request);
    if (!access_fpga(*record, direction, op))
        record->result = FACMSG_FPGA_FAILED;
    return send_reply(fd, direction.type, record);
}

int facmsg_fpga_write_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, WRITE, __func__);
}

int facmsg_fpga_read_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, READ, __func__);
}
