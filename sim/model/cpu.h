/* SPDX-License-Identifier: MIT
 *
 * The CPU's end of the switch: frames that it sends, frames that wait to be handed to it, and the capture of both.
 */
#ifndef SIM_CPU_H
#define SIM_CPU_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "event_clock.h"
#include "port.h"

namespace sim
{

/* Board time 0, in microseconds since the epoch. Fixed, so that two runs give the same captures. */
constexpr uint64_t POWER_UP_EPOCH_US = UINT64_C(1704067200) * 1000000;

/* Writes frames to a capture file: classic pcap, microseconds, Ethernet. */
class pcap_writer
{
  public:
    /* Creates or truncates the file; throws std::system_error when that fails. */
    explicit pcap_writer(const std::string &path);

    /* A frame from its destination MAC on, and when it passed, in microseconds since the epoch. */
    void write(uint64_t epoch_us, std::span<const uint8_t> bytes);

    /* Closes the file; false when something could not be written. */
    bool close();

  private:
    struct closer {
        void operator()(std::FILE *file) const
        {
            std::fclose(file);
        }
    };
    std::unique_ptr<std::FILE, closer> file_;
};

struct cpu_frame {
    pack_info info;
    std::vector<uint8_t> bytes;
};

class cpu
{
  public:
    explicit cpu(const event_clock &clock) : clock_(clock) {}

    /* From now on every CPU frame of both directions is captured. */
    void capture_to(std::unique_ptr<pcap_writer> capture);
    /* Ends the capture; false when it is incomplete. */
    bool close_capture();

    /* Captures a frame that the CPU sends. */
    void capture(std::span<const uint8_t> bytes);
    /* Puts a frame that came in on a port into the queue. */
    void receive(const port &from, const frame &incoming);
    bool has_frames() const
    {
        return !queue_.empty();
    }
    /* The waiting frames in order of arrival; they are the caller's now. */
    std::vector<cpu_frame> take_frames();

  private:
    const event_clock &clock_;
    std::unique_ptr<pcap_writer> capture_;
    std::vector<cpu_frame> queue_;
};

} // namespace sim

#endif
