/* SPDX-License-Identifier: MIT
 *
 * A frame under way. Copies share its bytes, so that flooding costs no copying.
 */
#ifndef SIM_FRAME_H
#define SIM_FRAME_H

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace sim
{

using mac_address = std::array<uint8_t, 6>;

/* The lower 12 bits of a tag. */
constexpr uint16_t VLAN_MASK = 0x0FFF;
constexpr uint16_t DEFAULT_VLAN = 1;

class frame
{
  public:
    /* From the destination MAC on, without FCS; at least 14 bytes. */
    explicit frame(std::span<const uint8_t> bytes);

    /* The frame as it is on the wire, tag included. */
    std::vector<uint8_t> bytes() const;
    size_t size() const;

    mac_address destination() const;
    /* Broadcast or multicast. */
    bool to_many() const
    {
        return (*untagged_)[0] & 1;
    }

    std::optional<uint16_t> tag; /* priority and VLAN of its 802.1Q tag */
    bool damaged = false;        /* its FCS does not fit */

  private:
    std::shared_ptr<const std::vector<uint8_t>> untagged_;
};

} // namespace sim

#endif
