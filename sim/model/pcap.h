/* SPDX-License-Identifier: MIT
 *
 * Writes frames to a capture file: classic pcap, microseconds, Ethernet.
 */
#ifndef SIM_PCAP_H
#define SIM_PCAP_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace sim
{

class pcap_writer
{
  public:
    /* Creates or truncates the file; throws std::system_error when that fails. */
    explicit pcap_writer(const std::string &path);

    /* time_us counts from the epoch. */
    void write(uint64_t time_us, std::span<const uint8_t> frame);

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

} // namespace sim

#endif
