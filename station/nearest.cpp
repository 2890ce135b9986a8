/* SPDX-License-Identifier: MIT
 *
 * A likely meaning for a mistyped name, by counting inserted, lost and exchanged letters.
 */
#include "nearest.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <numeric>
#include <utility>

namespace station
{

static size_t edit_distance(const std::string &from, const std::string &to)
{
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= from.size(); i++) {
        size_t diagonal = std::exchange(row[0], i);
        for (size_t j = 1; j <= to.size(); j++) {
            const size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, replaced}));
        }
    }
    return row.back();
}

std::string did_you_mean(const std::string &found, const std::vector<std::string> &known)
{
    constexpr size_t farthest = 3;
    const auto distance = [&](const std::string &name) { return edit_distance(found, name); };
    const auto nearest = std::ranges::min_element(known, {}, distance);
    if (nearest != known.end() && distance(*nearest) <= std::min(farthest, nearest->size() / 2))
        return fmt::format("; did you mean '{}'?", *nearest);
    return fmt::format("; known: {}", fmt::join(known, ", "));
}

} // namespace station
