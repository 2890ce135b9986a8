/* SPDX-License-Identifier: MIT
 *
 * The CPU's end of the switch: frames that it sends, frames that wait to be handed to it, and the capture of both.
 */
#include "cpu.h"

#include <utility>

namespace sim
{

void cpu::capture_to(std::unique_ptr<pcap_writer> capture)
{
    capture_ = std::move(capture);
}

bool cpu::close_capture()
{
    const auto capture = std::move(capture_);
    return !capture || capture->close();
}

void cpu::capture(std::span<const uint8_t> bytes)
{
    if (capture_)
        capture_->write(POWER_UP_EPOCH_US + clock_.now(), bytes);
}

void cpu::receive(const port &from, const frame &received)
{
    queue_.push_back({{0, 0, from.config().phy_id}, received.bytes()});
    capture(queue_.back().bytes);
}

std::vector<cpu_frame> cpu::take_frames()
{
    return std::exchange(queue_, {});
}

} // namespace sim
