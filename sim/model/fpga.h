/* SPDX-License-Identifier: MIT
 *
 * The FPGA: a memory of bytes behind switch ports, written and read by frames.
 */
#ifndef SIM_FPGA_H
#define SIM_FPGA_H

#include <map>

#include "frame.h"

namespace sim
{

class fpga
{
  public:
    explicit fpga(bool silent) : silent_(silent) {}

    /* Carries out a request. The answer to a read; nothing for a write, or for a frame that is no request. */
    std::optional<frame> handle(const frame &request);

    /* Frames that were no proper request. */
    uint64_t refused() const
    {
        return refused_;
    }

  private:
    void write(uint32_t address, std::span<const uint8_t> data);
    frame answer(std::span<const uint8_t> request, uint32_t address, size_t length) const;

    const bool silent_;
    uint64_t refused_ = 0;
    std::map<uint32_t, uint8_t> memory_; /* by address; 0 where nothing was written */
};

} // namespace sim

#endif
