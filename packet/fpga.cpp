/* SPDX-License-Identifier: MIT
 *
 * Reading and writing the FPGA by request frames out of one of the two switch ports that face it.
 */
#include "fpga.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "service/scoped.h"
#include "test_ports.h"

enum fpga_operation : uint32_t { FPGA_READ = 0, FPGA_WRITE = 1 };

constexpr uint32_t HEADER_LENGTH = 22;
constexpr uint32_t DATA_OFFSET = 28; /* after header, address and word count; the same in the reply */
constexpr uint32_t MAX_READ = FPGA_REPLY_SIZE - DATA_OFFSET;
constexpr uint32_t SHORTEST_FRAME = 64;
constexpr uint16_t FPGA_TX_SELECTOR = 1;
constexpr useconds_t WRITE_REPLY_US = 200000;
constexpr useconds_t READ_REPLY_US = 50000;

/* Handed to get_port_phyid, which writes the first word. */
struct fpga_req {
    uint32_t phy_id;
    uint32_t len;
    uint32_t op_type;
    uint32_t addr;
    uint8_t data[FACMSG_FPGA_MAX_WRITE];
};
static_assert(sizeof(fpga_req) == 48 && offsetof(fpga_req, data) == 16);

static uint32_t whole_words(uint32_t length)
{
    return length / 4 * 4;
}

static void put_16(uint8_t *to, uint32_t value)
{
    to[0] = static_cast<uint8_t>(value >> 8);
    to[1] = static_cast<uint8_t>(value);
}

static void put_32(uint8_t *to, uint32_t value)
{
    put_16(to, value >> 16);
    put_16(to + 2, value);
}

/* The switch port that an FPGA port index stands for. */
static uint32_t switch_port(uint32_t fpga_port, uint32_t product_id, const char *op)
{
    log_as(op, LOG_TRACE, "current device product_id:%x\n", product_id);
    if (product_id != FACMSG_PRODUCT_48GT)
        return 36 + fpga_port;
    log_as(op, LOG_TRACE, "current device is 48GT switch lport\n");
    return 60 + fpga_port;
}

static bool address_request(uint32_t port, fpga_req *request, const char *op)
{
    if (!slots_filled(&drv::send_packet, &drv::get_port_phyid)) {
        log_as(op, LOG_ERROR, "vexa_drv_send_packet function is null.\n");
        return false;
    }
    if (!get_phy_id(port, request, op))
        return false;
    if (request->op_type == FPGA_READ)
        log_as(op, LOG_TRACE, "port(%d) get port phyid 0x%x. rd_len:%d\n", static_cast<int>(port), request->phy_id,
               static_cast<int>(request->len));
    return true;
}

/* A new request frame, *length bytes with room for the shortest Ethernet frame in any case, zero-filled; the caller
 * frees it. Null and length 0 when memory is short. */
static uint8_t *factory_fill_fpga_packet_buffer(uint32_t, uint32_t *length, const uint8_t *data, uint32_t op_type,
                                                uint32_t address, uint32_t data_length)
{
    log_trace("fpga packet len:%d\r\n", static_cast<int>(HEADER_LENGTH));
    const uint32_t size = DATA_OFFSET + (op_type == FPGA_READ ? 0 : data_length);
    const auto frame = static_cast<uint8_t *>(calloc(1, std::max(size, SHORTEST_FRAME)));
    *length = 0;
    if (frame == nullptr) {
        log_error("Allocate efmp buffer fail,packet len %d.\r\n", static_cast<int>(size));
        return nullptr;
    }
    log_trace("Allocate efmp buffer--%p, len--%d. addr:0x%x, op_type:%d actal_len:%d\r\n", static_cast<void *>(frame),
              static_cast<int>(size), address, static_cast<int>(op_type), static_cast<int>(data_length));
    const uint32_t total_length = size - HEADER_LENGTH;
    const uint32_t actual_length = whole_words(data_length);
    memcpy(frame, FPGA_DESTINATION, sizeof(FPGA_DESTINATION));
    memcpy(frame + 6, FPGA_SOURCE, sizeof(FPGA_SOURCE));
    put_16(frame + 12, 0xFFF9);
    frame[16] = static_cast<uint8_t>(op_type);
    put_16(frame + 18, 0xF3F3);
    put_16(frame + 20, total_length);
    put_32(frame + 22, address);
    put_16(frame + 26, data_length / 4);
    log_trace("total len is:%d, len:%d\n", static_cast<int>(total_length), static_cast<int>(data_length));
    if (op_type != FPGA_READ) {
        log_trace("actal len is %d\n", static_cast<int>(actual_length));
        memcpy(frame + DATA_OFFSET, data, actual_length);
    }
    *length = size;
    log_trace("before fiil data/read/write data actal len:%d\n", static_cast<int>(actual_length));
    vexa_fpga_pkt_print(frame, size);
    return frame;
}

/* Sends the request, with the reply buffer cleared for its answer. */
static bool send_request(uint32_t port, fpga_req *request, const char *op)
{
    if (!address_request(port, request, op))
        return false;
    uint32_t length;
    const scoped_free frame(factory_fill_fpga_packet_buffer(request->phy_id, &length, request->data, request->op_type,
                                                            request->addr, request->len));
    if (frame.data == nullptr) {
        log_as(op, LOG_ERROR, "Fill packet buffer fail.\n");
        return false;
    }
    clear_fpga_reply();
    const pack_info info = {0, FPGA_TX_SELECTOR, request->phy_id};
    if (call(&drv::send_packet, &info, frame.data, std::max(length, SHORTEST_FRAME)) != 0) {
        log_as(op, LOG_ERROR, "Send packet buffer fail.\n");
        return false;
    }
    return true;
}

bool fpga_access_valid(uint32_t fpga_port, uint32_t length, uint32_t max_length, const char *op)
{
    if (fpga_port != 1 && fpga_port != 2) {
        log_as(op, LOG_ERROR, "fpga port %u is not valid, allowed: 1 or 2.\n", fpga_port);
        return false;
    }
    if (length > max_length) {
        log_as(op, LOG_ERROR, "fpga data length %u is not valid, allowed: 0 to %u.\n", length, max_length);
        return false;
    }
    return true;
}

int vexa_fpga_buf_write(uint32_t fpga_port, uint32_t address, const void *data, uint32_t length, uint32_t product_id)
{
    if (!fpga_access_valid(fpga_port, length, FACMSG_FPGA_MAX_WRITE, __func__))
        return -1;
    const uint32_t port = switch_port(fpga_port, product_id, __func__);
    fpga_req request = {0, length, FPGA_WRITE, address, {}};
    if (length > 0)
        memcpy(request.data, data, length);
    if (!send_request(port, &request, __func__))
        return -1;
    log_trace("Send packet buffer success.\n");
    usleep(WRITE_REPLY_US);
    log_trace("before print data/in write\n");
    uint8_t reply[FPGA_REPLY_SIZE];
    copy_fpga_reply(reply);
    vexa_fpga_pkt_print(reply, HEADER_LENGTH);
    return 0;
}

int vexa_fpga_buf_read(uint32_t fpga_port, uint32_t address, void *data, uint32_t length, uint32_t product_id)
{
    if (!fpga_access_valid(fpga_port, length, MAX_READ, __func__))
        return -1;
    const uint32_t port = switch_port(fpga_port, product_id, __func__);
    fpga_req request = {0, length, FPGA_READ, address, {}};
    if (!send_request(port, &request, __func__))
        return -1;
    log_trace("Send packet/in read buffer success.\n");
    usleep(READ_REPLY_US);
    uint8_t reply[FPGA_REPLY_SIZE];
    copy_fpga_reply(reply);
    if (length > 0)
        memcpy(data, reply + DATA_OFFSET, whole_words(length));
    vexa_fpga_pkt_print(data, whole_words(length));
    log_trace("before print data/in read pack_info.len:%d\n", static_cast<int>(whole_words(length)));
    vexa_fpga_pkt_print(reply, DATA_OFFSET + length);
    return 0;
}

void vexa_fpga_pkt_print(const void *bytes, uint32_t count)
{
    for (uint32_t i = 0; i < count; i++) {
        if (i % 16 == 0)
            log_trace("\n");
        log_trace("%02x ", static_cast<const uint8_t *>(bytes)[i]);
    }
    log_trace("\n");
}
