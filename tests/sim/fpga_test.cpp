/* SPDX-License-Identifier: MIT
 *
 * The FPGA: which frames are requests to it, and what it answers.
 */
#include <algorithm>
#include <gtest/gtest.h>

#include "sim/model/fpga.h"

using namespace sim;

static std::vector<uint8_t> request(uint8_t operation, uint8_t address, uint8_t words, std::vector<uint8_t> data)
{
    std::vector<uint8_t> bytes = {0x01, 0x6B, 0xE2,      0, 0,    0x0A, 0x01, 0x6B, 0xE2, 0, 0, 0x0B,    0xFF, 0xF9,
                                  0,    0,    operation, 0, 0xF3, 0xF3, 0,    0,    0,    0, 0, address, 0,    words};
    bytes[21] = static_cast<uint8_t>(6 + data.size());
    bytes.resize(128);
    std::copy(data.begin(), data.end(), bytes.begin() + 28);
    bytes.resize(64);
    return bytes;
}

TEST(fpga, keeps_what_proper_requests_write_and_refuses_others)
{
    fpga device(false);
    EXPECT_FALSE(device.handle(frame(request(1, 0x10, 1, {1, 2, 3, 4, 5, 6})))) << "two bytes are no word";
    const auto answer = device.handle(frame(request(0, 0x0E, 2, {})));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->destination(), (mac_address{0x01, 0x6B, 0xE2, 0x00, 0x00, 0x0B}));
    const auto bytes = answer->bytes();
    EXPECT_EQ(bytes.size(), 60u);
    EXPECT_EQ(std::vector(bytes.begin() + 20, bytes.begin() + 36),
              (std::vector<uint8_t>{0, 14, 0, 0, 0, 0x0E, 0, 2, 0, 0, 1, 2, 3, 4, 0, 0}));
    EXPECT_EQ(device.refused(), 0u);
    for (const size_t at : {0u, 11u, 12u, 16u, 18u, 20u, 27u}) { /* addresses, type, operation, mark, length, words */
        auto wrong = request(1, 0x10, 2, {9, 9, 9, 9, 9, 9, 9, 9});
        wrong[at] ^= 0x20;
        EXPECT_FALSE(device.handle(frame(wrong)));
    }
    EXPECT_FALSE(device.handle(frame(std::vector<uint8_t>(27))));
    EXPECT_FALSE(device.handle(frame(request(1, 0x10, 20, std::vector<uint8_t>(80))))) << "cut off at 64 bytes";
    EXPECT_FALSE(device.handle(frame(request(0, 0x10, 1, {9})))) << "a read carries no data";
    auto longest = request(0, 0x0E, 371 & 0xFF, {});
    longest.resize(28);
    longest[26] = 371 >> 8;
    const auto most = device.handle(frame(longest))->bytes();
    EXPECT_EQ((std::array<size_t, 3>{most.size(), most.at(20), most.at(21)}), (std::array<size_t, 3>{1512, 5, 0xD2}));
    longest[27]++;
    EXPECT_FALSE(device.handle(frame(longest))) << "the answer would be too long for a frame";
    EXPECT_EQ(device.refused(), 11u);
    EXPECT_EQ(device.handle(frame(request(0, 0x0E, 2, {})))->bytes(), bytes) << "and nothing was written";
    EXPECT_FALSE(fpga(true).handle(frame(request(0, 0, 1, {}))));
}
