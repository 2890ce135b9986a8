/* SPDX-License-Identifier: MIT
 *
 * The FPGA write and read requests: frames byte for byte, what is refused, and what a failure leaves behind.
 */
#include <gtest/gtest.h>
#include <regex>

#include "fake_driver.h"
#include "log_capture.h"
#include "request_client.h"
#include "simulation.h"
#include "trace.h"

using namespace std::string_literals;

constexpr uint32_t WRITE = 11, READ = 12, UNWRITTEN = 0xEEEEEEEE;
static const std::string SET_MACS = "set_cpu_mac_addr(01:6b:e2:00:00:0b)\nset_cpu_mac_addr(01:6b:e2:00:00:0a)\n";
static const std::string CLEAR_MACS = "clear_cpu_mac_addr(01:6b:e2:00:00:0b)\nclear_cpu_mac_addr(01:6b:e2:00:00:0a)\n";

struct fpga : testing::Test {
    fpga()
    {
        for (const uint32_t port : {37u, 38u, 61u, 62u})
            driver.add_port(port);
        driver.on_send = [this](const pack_info &info, const uint8_t *bytes, uint32_t length) {
            sent.assign(bytes, bytes + length);
            vexa_recv_packet(&info, reinterpret_cast<const uint8_t *>(reply.data()),
                             static_cast<uint32_t>(reply.size()));
        };
        for (char byte = 0; byte < 100; byte++)
            reply += byte;
    }
    ~fpga() override
    {
        simulation::fail_allocation(0);
    }
    /* The data field goes out as A, B, C, …; what is read comes back as 0, 1, 2, … */
    fpga_record ask(uint32_t type, uint32_t fpga_port, uint32_t len, uint32_t product_id = 0)
    {
        fpga_record record = {UNWRITTEN, fpga_port, 0x12345678, len, product_id, {}};
        for (uint8_t i = 0; i < sizeof(record.data); i++)
            record.data[i] = static_cast<uint8_t>('A' + i);
        request_data.assign(std::begin(record.data), std::end(record.data));
        trace_clear();
        return answered(type, record);
    }
    fake_driver driver;
    std::string sent, request_data, reply = std::string(12, 0) + "\xFF\xF9" + std::string(14, 0);
};

TEST_F(fpga, frames_byte_for_byte)
{
    const struct {
        uint32_t len;
        std::string write_sizes, read_sizes; /* total length in bytes, and words, as in the frame */
    } cases[] = {
        {0, "\x06\0"s, "\x06\0"s},      {4, "\x0A\x01"s, "\x06\x01"s},  {6, "\x0C\x01"s, "\x06\x01"s},
        {31, "\x25\x07"s, "\x06\x07"s}, {32, "\x26\x08"s, "\x06\x08"s},
    };
    for (const auto &c : cases)
        for (const uint32_t type : {WRITE, READ})
            for (const uint32_t port : {37u, 38u, 61u, 62u}) {
                const bool write = type == WRITE;
                SCOPED_TRACE(std::to_string(type) + " " + std::to_string(port) + " " + std::to_string(c.len));
                const auto record = ask(type, port == 37 || port == 61 ? 1 : 2, c.len, port > 60 ? 0x4A1C0027 : 7);
                const std::string &sizes = write ? c.write_sizes : c.read_sizes;
                const size_t whole = c.len / 4 * 4;
                std::string frame = "\x01\x6B\xE2\0\0\x0A\x01\x6B\xE2\0\0\x0B\xFF\xF9\0\0"s +
                                    (write ? "\x01"s : "\0"s) + "\0\xF3\xF3\0"s + sizes[0] + "\x12\x34\x56\x78\0"s +
                                    sizes[1] + (write ? request_data.substr(0, whole) : "");
                frame.resize(64);
                EXPECT_EQ(sent, frame);
                EXPECT_EQ(record.result, UNWRITTEN);
                EXPECT_EQ(std::string(std::begin(record.data), std::end(record.data)),
                          write ? request_data : reply.substr(28, whole) + request_data.substr(whole));
                uint32_t first_word = 0;
                memcpy(&first_word, request_data.data(), write ? std::min(c.len, 4u) : 0);
                EXPECT_EQ(trace_text(), SET_MACS + "get_port_phyid(" + std::to_string(port) + "," +
                                            std::to_string(c.len) + (write ? ",1," : ",0,") + "305419896," +
                                            std::to_string(first_word) + ")\nsend_packet(0,1," +
                                            std::to_string(0x100 + port) + ",64)\nwait_us(" +
                                            (write ? "200000" : "50000") + ")\n" + CLEAR_MACS);
            }
}

TEST_F(fpga, reads_zeros_without_a_reply)
{
    ask(READ, 1, 64); /* leaves its reply in the buffer */
    driver.on_send = [](const pack_info &, const uint8_t *, uint32_t) {};
    const auto record = ask(READ, 1, 64);
    EXPECT_EQ(record.result, UNWRITTEN);
    EXPECT_EQ(std::string(std::begin(record.data), std::end(record.data)), std::string(64, 0));
}

TEST_F(fpga, fails_without_a_trace_of_the_access)
{
    const struct {
        uint32_t type, fpga_port, len;
        fake_failure failure;
        std::string error, access_error;
        int macs_set, macs_cleared;
    } cases[] = {
        {WRITE, 0, 4, {}, "fpga port 0 is not valid, allowed: 1 or 2.\n", "", 0, 0},
        {READ, 3, 4, {}, "fpga port 3 is not valid, allowed: 1 or 2.\n", "", 0, 0},
        {WRITE, 1, 33, {}, "fpga data length 33 is not valid, allowed: 0 to 32.\n", "", 0, 0},
        {READ, 2, 65, {}, "fpga data length 65 is not valid, allowed: 0 to 64.\n", "", 0, 0},
        {WRITE, 2, 4, {"set_cpu_mac_addr", 0, 1}, "Set L2 MAC-FPGA address table fail.\n", "", 1, 0},
        {READ, 2, 4, {"set_cpu_mac_addr", 0, 2}, "Set L2 MAC-FPGA address table fail.\n", "", 2, 0},
        {WRITE, 2, 4, {"get_port_phyid"}, "fpga write err\n", "port(38) get port phyid fail.\n", 2, 2},
        {READ, 2, 4, {"send_packet"}, "fpga read err\n", "Send packet buffer fail.\n", 2, 2},
        {WRITE, 2, 4, {"memory"}, "fpga write err\n", "Fill packet buffer fail.\n", 2, 2},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.error);
        driver.failures = {c.failure};
        simulation::fail_allocation(c.failure.slot == "memory");
        const log_capture log(1);
        const auto record = ask(c.type, c.fpga_port, c.len);
        EXPECT_EQ(record.result, 3u);
        EXPECT_EQ(std::string(std::begin(record.data), std::end(record.data)), request_data);
        const std::string way = c.type == WRITE ? "write" : "read";
        EXPECT_EQ(log.text_of("facmsg_fpga_" + way + "_fun"), c.error);
        EXPECT_EQ(log.text_of("vexa_fpga_buf_" + way), c.access_error);
        EXPECT_EQ(trace_count("set_cpu_mac_addr"), c.macs_set);
        EXPECT_EQ(trace_count("clear_cpu_mac_addr"), c.macs_cleared);
    }
    driver.failures.clear();
    const log_capture log(1);
    facmsg_vexa_diag_drv.send_packet = nullptr;
    EXPECT_EQ(ask(READ, 1, 4).result, 3u);
    facmsg_vexa_diag_drv.clear_cpu_mac_addr = nullptr;
    EXPECT_EQ(ask(WRITE, 1, 4).result, 3u);
    EXPECT_EQ(log.text(), "vexa_fpga_buf_read: vexa_drv_send_packet function is null.\n"
                          "facmsg_fpga_read_fun: fpga read err\n"
                          "facmsg_fpga_write_fun: set cpu mac addr inter/write is null\n");
}

TEST_F(fpga, direct_access_has_room_for_a_hundred_bytes)
{
    char data[104] = {};
    EXPECT_EQ(vexa_fpga_buf_read(1, 0, data, 100, 0), 0);
    EXPECT_EQ(std::string(data, 104), reply.substr(28) + std::string(4, 0));
    EXPECT_EQ(vexa_fpga_buf_read(1, 0, data, 101, 0), -1);
    EXPECT_EQ(vexa_fpga_buf_write(2, 0, data, 33, 0), -1);
    const log_capture log(2);
    vexa_fpga_pkt_print(reply.data() + 28, 17);
    EXPECT_EQ(std::regex_replace(log.text(), std::regex(R"(\[FACTORY [^\]]*\] |vexa_fpga_pkt_print: )"), ""),
              "\n00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f \n10 \n");
}
