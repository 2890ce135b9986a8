/* SPDX-License-Identifier: MIT */
#include "cpu.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace sim
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

pcap_writer::pcap_writer(const std::string &path) : file_(std::fopen(path.c_str(), "wbe"))
{
    if (file_ == nullptr)
        throw std::system_error(errno, std::generic_category(), path);
    const file_header header;
    std::fwrite(&header, sizeof header, 1, file_.get());
}

void pcap_writer::write(uint64_t epoch_us, std::span<const uint8_t> bytes)
{
    if (file_ == nullptr)
        return;
    const auto length = static_cast<uint32_t>(bytes.size());
    const frame_header header = {static_cast<uint32_t>(epoch_us / 1000000), static_cast<uint32_t>(epoch_us % 1000000),
                                 length, length};
    std::fwrite(&header, sizeof header, 1, file_.get());
    std::fwrite(bytes.data(), 1, bytes.size(), file_.get());
}

bool pcap_writer::close()
{
    auto *file = file_.release();
    const bool wrote_all = file != nullptr && std::ferror(file) == 0;
    return file != nullptr && std::fclose(file) == 0 && wrote_all;
}

void cpu::capture_to(std::unique_ptr<pcap_writer> capture)
{
    capture_ = std::move(capture);
}

bool cpu::close_capture()
{
    const auto capture = std::move(capture_);
    return capture == nullptr || capture->close();
}

void cpu::capture(std::span<const uint8_t> bytes)
{
    if (capture_ != nullptr)
        capture_->write(POWER_UP_EPOCH_US + clock_.now(), bytes);
}

void cpu::receive(const port &from, const frame &incoming)
{
    queue_.push_back({{0, 0, from.config().phy_id}, incoming.bytes()});
    capture(queue_.back().bytes);
}

std::vector<cpu_frame> cpu::take_frames()
{
    return std::exchange(queue_, {});
}

} // namespace sim
