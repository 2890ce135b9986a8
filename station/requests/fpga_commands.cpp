/* SPDX-License-Identifier: MIT
 *
 * Reading and writing the FPGA: as many requests as the data take, each of a size the service accepts.
 *
 * Neither is judged. The service counts a write as done once its frame is sent, and reads zeros when the FPGA keeps
 * silent.
 */
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <fstream>
#include <iostream>
#include <iterator>

#include "common/file.h"
#include "common/words.h"
#include "families.h"

namespace station
{

using bytes = std::vector<uint8_t>;

static void set_data(request &task, const option &field, const bytes &data)
{
    if (!task.data.empty())
        throw usage_error(fmt::format("{}: found beside HEX, allowed: one of the two", field.name));
    if (data.empty() || data.size() % 4 != 0)
        throw usage_error(fmt::format("{}: found {}, allowed: a multiple of 4, at least 4", field.name,
                                      common::counted(data.size(), "byte")));
    task.data = data;
}

static void set_hex(request &task, const option &field, const std::string &value)
{
    const auto data = parse_hex(value);
    if (!data)
        throw usage_error(fmt::format("{}: found '{}', allowed: pairs of hexadecimal digits", field.name, value));
    set_data(task, field, *data);
}

static void set_file(request &task, const option &field, const std::string &value)
{
    std::ifstream file;
    const std::string fault = value == "-" ? "" : common::read_fault(value);
    if (!fault.empty())
        throw usage_error(
            fmt::format("{}: found '{}' ({}), allowed: a file that can be read, or -", field.name, value, fault));
    if (value != "-")
        file.open(value, std::ios::binary);
    std::istream &input = value == "-" ? std::cin : file;
    const bytes data{std::istreambuf_iterator<char>(input), {}};
    if (!input)
        throw usage_error(fmt::format("{}: found '{}', allowed: a file that can be read, or -", field.name, value));
    set_data(task, field, data);
}

/* The path is made absolute: the station goes to the host's directory before it writes. */
static void set_output(request &task, const option &field, const std::string &value)
{
    const std::string fault = value.empty() ? "no name" : common::write_fault(value);
    if (!fault.empty())
        throw usage_error(
            fmt::format("{}: found '{}' ({}), allowed: a file that can be written", field.name, value, fault));
    set_own(task, field, std::filesystem::absolute(value));
}

static constexpr option ADDRESS_OPTION{.name = "ADDRESS",
                                       .help = "FPGA address of the first byte, hexadecimal",
                                       .offset = offsetof(fpga_record, addr),
                                       .hex = true};
static constexpr option PORT_OPTION{.name = "--port",
                                    .help = "which of the two switch ports that face the FPGA",
                                    .offset = offsetof(fpga_record, fpga_port),
                                    .initial = 1,
                                    .least = 1,
                                    .most = 2};
static constexpr option PRODUCT_OPTION{.name = "--product-id",
                                       .help = "product id, hexadecimal; tells which ports face the FPGA",
                                       .offset = offsetof(fpga_record, product_id),
                                       .hex = true};
static const option WRITE_OPTIONS[] = {
    ADDRESS_OPTION,
    {.name = "HEX", .help = "data, pairs of hexadecimal digits, blanks allowed", .values = arity::any, .set = set_hex},
    {.name = "--file", .help = "data from a file, - for standard input", .values = arity::text, .set = set_file},
    PORT_OPTION,
    PRODUCT_OPTION,
};
static const option READ_OPTIONS[] = {
    ADDRESS_OPTION,
    {.name = "LENGTH",
     .help = "bytes",
     .offset = offsetof(fpga_record, len),
     .initial = 4,
     .least = 4,
     .most = 1 << 24,
     .multiple = 4},
    {.name = "--output", .help = "write the bytes to this file", .values = arity::text, .set = set_output},
    PORT_OPTION,
    PRODUCT_OPTION,
};

constinit const std::span<const option> FPGA_WRITE_OPTIONS{WRITE_OPTIONS};
constinit const std::span<const option> FPGA_READ_OPTIONS{READ_OPTIONS};

static void check_range(uint32_t start, size_t size)
{
    if (start + uint64_t{size} > uint64_t{1} << 32)
        throw usage_error(fmt::format("ADDRESS: found '{:#x}', allowed: up to {:#x} for {} bytes", start,
                                      (uint64_t{1} << 32) - size, size));
}

static outcome explain_failure(const fpga_record &part, uint32_t result, const std::string &done)
{
    if (result != FACMSG_FPGA_FAILED)
        return {.summary = fmt::format("the reply's result is {}; expected 0 or 3", result), .result = result};
    return {.summary =
                fmt::format("the host could not do it for {} bytes at address {:#x} (result 3): it lacks a driver "
                            "function, or a CPU address or the frame was refused (log-level 1 shows which); {} done",
                            part.len, part.addr, done),
            .result = result};
}

/* Moves data from or to the FPGA, at most `most` bytes a request. Returns what went wrong, if anything. */
static std::optional<outcome> move_data(const request &task, const sender &send, bytes &data, uint32_t most)
{
    auto part = record_of<fpga_record>(task.payload);
    check_range(part.addr, data.size());
    for (size_t done = 0; done < data.size(); done += part.len, part.addr += part.len) {
        const std::string so_far = fmt::format("{} of {} bytes", done, data.size());
        part.len = std::min(most, static_cast<uint32_t>(data.size() - done));
        if (task.type == FACMSG_FPGA_WRITE)
            std::memcpy(part.data, data.data() + done, part.len);
        request sent = task;
        std::memcpy(sent.payload.data(), &part, sizeof(part));
        const auto reply = record_of<fpga_record>(send(sent, so_far));
        if (reply.result != 0)
            return explain_failure(part, reply.result, so_far);
        if (task.type == FACMSG_FPGA_READ)
            std::memcpy(data.data() + done, reply.data, part.len);
    }
    return std::nullopt;
}

outcome write_fpga(const request &task, const sender &send)
{
    if (task.data.empty())
        throw usage_error("HEX: found nothing, allowed: data in HEX or with --file");
    bytes data = task.data;
    if (const auto failure = move_data(task, send, data, FACMSG_FPGA_MAX_WRITE))
        return *failure;
    return {.verdict = verdict::unjudged,
            .summary =
                fmt::format("{} bytes sent to FPGA address {:#x}; only reading them back shows that they arrived",
                            data.size(), record_of<fpga_record>(task.payload).addr),
            .result = 0};
}

static void save(const std::string &name, const bytes &data)
{
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char *>(data.data()), static_cast<std::streamsize>(data.size()));
    if (!file.flush())
        throw std::runtime_error(fmt::format("cannot write file '{}': {}", name, common::write_fault(name)));
}

outcome read_fpga(const request &task, const sender &send)
{
    const auto record = record_of<fpga_record>(task.payload);
    const auto output = own_value(task, "--output");
    bytes data(record.len);
    if (const auto failure = move_data(task, send, data, FACMSG_FPGA_MAX_READ))
        return *failure;
    const bool silent = std::ranges::all_of(data, [](uint8_t byte) { return byte == 0; });
    outcome unit{.verdict = verdict::unjudged,
                 .summary = fmt::format("{} bytes read from FPGA address {:#x}{}", data.size(), record.addr,
                                        silent ? ", all zero; the same is read when the FPGA does not answer" : ""),
                 .result = 0};
    if (output) {
        save(*output, data);
    } else {
        unit.text = hex_dump(data);
        unit.members = {{"data_hex", fmt::format("{:02x}", fmt::join(data, ""))}};
    }
    return unit;
}

} // namespace station
