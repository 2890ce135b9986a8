/* SPDX-License-Identifier: MIT
 *
 * Times in words.
 */
#include "duration.h"

#include <cmath>
#include <cstdint>
#include <fmt/format.h>

namespace common
{

static std::string with_rest(int64_t number, const char *unit, int64_t rest, const char *smaller)
{
    return fmt::format("{} {}{}", number, unit, rest == 0 ? "" : fmt::format(" {} {}", rest, smaller));
}

std::string duration_text(double seconds)
{
    const auto whole = static_cast<int64_t>(std::llround(seconds));
    const bool is_whole = static_cast<double>(whole) == seconds;
    if (seconds < 10 && !is_whole)
        return fmt::format("{:.1f} s", seconds);
    if (whole < 60)
        return fmt::format("{} s", whole);
    return whole < 3600 ? with_rest(whole / 60, "min", whole % 60, "s")
                        : with_rest(whole / 3600, "h", whole / 60 % 60, "min");
}

} // namespace common
