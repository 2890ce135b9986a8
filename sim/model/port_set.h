/* SPDX-License-Identifier: MIT
 *
 * A set of ports by number, quick to intersect: a full queue costs a flooded frame nothing.
 */
#ifndef SIM_PORT_SET_H
#define SIM_PORT_SET_H

#include <bit>
#include <cstdint>

#include "facmsg_protocol.h"

namespace sim
{

class port_set
{
  public:
    void put(uint32_t number, bool in)
    {
        const auto bit = uint64_t{1} << (number - 1) % 64;
        auto &word = words_[(number - 1) / 64];
        word = in ? word | bit : word & ~bit;
    }

    bool has(uint32_t number) const
    {
        return words_[(number - 1) / 64] >> (number - 1) % 64 & 1;
    }

    /* Calls use(number) for every port of this set that is also in the other, ascending. */
    template <class F> void for_each_also_in(const port_set &other, F use) const
    {
        for (uint32_t i = 0; i < WORDS; ++i) {
            for (auto both = words_[i] & other.words_[i]; both; both &= both - 1)
                use(i * 64 + static_cast<uint32_t>(std::countr_zero(both)) + 1);
        }
    }

  private:
    static constexpr uint32_t WORDS = FACMSG_MAX_PORTS / 64;
    uint64_t words_[WORDS] = {};
};

} // namespace sim

#endif
