/* SPDX-License-Identifier: MIT
 *
 * Numbers of things in words.
 */
#include "count.h"

#include <fmt/format.h>

namespace common
{

std::string counted(uint64_t count, std::string_view noun)
{
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

} // namespace common
