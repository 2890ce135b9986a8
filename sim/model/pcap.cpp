/* SPDX-License-Identifier: MIT
 *
 * Writes frames to a capture file: classic pcap, microseconds, Ethernet.
 */
#include "pcap.h"

#include <cerrno>
#include <system_error>

namespace sim
{

namespace
{

struct file_header {
    uint32_t magic = 0xA1B2C3D4; /* tells the reader our byte order, and that fractions are microseconds */
    uint16_t major = 2;
    uint16_t minor = 4;
    uint32_t zone = 0;
    uint32_t accuracy = 0;
    uint32_t longest_frame = 65535;
    uint32_t link_type = 1; /* Ethernet */
};
static_assert(sizeof(file_header) == 24);

struct frame_header {
    uint32_t seconds;
    uint32_t microseconds;
    uint32_t captured;
    uint32_t length;
};
static_assert(sizeof(frame_header) == 16);

} // namespace

pcap_writer::pcap_writer(const std::string &path) : file_(std::fopen(path.c_str(), "wbe"))
{
    if (!file_)
        throw std::system_error(errno, std::generic_category(), path);
    const file_header header;
    std::fwrite(&header, sizeof header, 1, file_.get());
}

void pcap_writer::write(uint64_t time_us, std::span<const uint8_t> frame)
{
    if (!file_)
        return;
    const auto length = static_cast<uint32_t>(frame.size());
    const frame_header header = {static_cast<uint32_t>(time_us / 1000000), static_cast<uint32_t>(time_us % 1000000),
                                 length, length};
    std::fwrite(&header, sizeof header, 1, file_.get());
    std::fwrite(frame.data(), 1, frame.size(), file_.get());
}

bool pcap_writer::close()
{
    auto *file = file_.release();
    const bool wrote_all = file && !std::ferror(file);
    return file && std::fclose(file) == 0 && wrote_all;
}

} // namespace sim
