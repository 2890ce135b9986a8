/* SPDX-License-Identifier: MIT */
#include "fpga.h"

#include <algorithm>

namespace sim
{

/* A frame: addresses, type, then the operation, a length that counts from the FPGA address on, that address, the number
 * of words, and the data. All numbers are big-endian. */
static constexpr uint8_t FPGA_MAC[] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0A};
static constexpr uint8_t CPU_MAC[] = {0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0B};
static constexpr uint8_t TYPE[] = {0xFF, 0xF9, 0x00, 0x00};
static constexpr uint8_t MARK[] = {0x00, 0xF3, 0xF3}; /* after the operation */

static constexpr size_t TO_AT = 0;
static constexpr size_t FROM_AT = 6;
static constexpr size_t TYPE_AT = 12;
static constexpr size_t OPERATION_AT = 16;
static constexpr size_t MARK_AT = 17;
static constexpr size_t LENGTH_AT = 20;
static constexpr size_t ADDRESS_AT = 22;
static constexpr size_t WORDS_AT = 26;
static constexpr size_t DATA_AT = 28;

static constexpr size_t BEFORE_DATA = DATA_AT - ADDRESS_AT; /* counts in the length */
static constexpr size_t SHORTEST_FRAME = 60;
static constexpr size_t LONGEST_ANSWER = 1514;

enum operation : uint8_t { READ = 0, WRITE = 1 };

template <size_t N> static bool has_at(std::span<const uint8_t> bytes, size_t at, const uint8_t (&expected)[N])
{
    return std::equal(std::begin(expected), std::end(expected), bytes.begin() + static_cast<ptrdiff_t>(at));
}

template <size_t N> static void put_at(std::vector<uint8_t> &bytes, size_t at, const uint8_t (&content)[N])
{
    std::copy(std::begin(content), std::end(content), bytes.begin() + static_cast<ptrdiff_t>(at));
}

static uint32_t number_at(std::span<const uint8_t> bytes, size_t at, size_t size)
{
    uint32_t number = 0;
    for (const auto byte : bytes.subspan(at, size))
        number = number << 8 | byte;
    return number;
}

static bool is_request(std::span<const uint8_t> bytes)
{
    if (bytes.size() < DATA_AT || !has_at(bytes, TO_AT, FPGA_MAC) || !has_at(bytes, FROM_AT, CPU_MAC) ||
        !has_at(bytes, TYPE_AT, TYPE) || !has_at(bytes, MARK_AT, MARK))
        return false;
    const size_t length = number_at(bytes, LENGTH_AT, 2);
    const size_t data = size_t{number_at(bytes, WORDS_AT, 2)} * 4;
    switch (bytes[OPERATION_AT]) {
    case READ:
        return length == BEFORE_DATA && DATA_AT + data <= LONGEST_ANSWER;
    case WRITE: /* bytes after the last whole word count in the length, and are not written */
        return length >= BEFORE_DATA && (length - BEFORE_DATA) / 4 * 4 == data && DATA_AT + data <= bytes.size();
    default:
        return false;
    }
}

std::optional<frame> fpga::handle(const frame &request)
{
    const auto bytes = request.bytes();
    if (silent_ || request.damaged)
        return std::nullopt;
    if (!is_request(bytes)) {
        refused_++;
        return std::nullopt;
    }
    const auto address = number_at(bytes, ADDRESS_AT, 4);
    const auto length = number_at(bytes, WORDS_AT, 2) * 4;
    if (bytes[OPERATION_AT] == READ)
        return answer(bytes, address, length);
    write(address, std::span(bytes).subspan(DATA_AT, length));
    return std::nullopt;
}

void fpga::write(uint32_t address, std::span<const uint8_t> data)
{
    for (const auto byte : data)
        memory_[address++] = byte;
}

frame fpga::answer(std::span<const uint8_t> request, uint32_t address, size_t length) const
{
    std::vector<uint8_t> bytes(std::max(DATA_AT + length, SHORTEST_FRAME));
    std::copy_n(request.begin(), DATA_AT, bytes.begin());
    put_at(bytes, TO_AT, CPU_MAC);
    put_at(bytes, FROM_AT, FPGA_MAC);
    bytes[LENGTH_AT] = static_cast<uint8_t>((BEFORE_DATA + length) >> 8);
    bytes[LENGTH_AT + 1] = static_cast<uint8_t>(BEFORE_DATA + length);
    for (size_t i = 0; i < length; i++) {
        const auto cell = memory_.find(address++);
        bytes[DATA_AT + i] = cell == memory_.end() ? uint8_t{0} : cell->second;
    }
    return frame(bytes);
}

} // namespace sim
