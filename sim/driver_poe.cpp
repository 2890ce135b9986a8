/* SPDX-License-Identifier: MIT
 *
 * Driver functions: PoE.
 */
#include "driver_slots.h"

namespace sim
{

std::span<const slot_row> poe_slots()
{
    return {};
}

} // namespace sim
