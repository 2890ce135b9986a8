/* SPDX-License-Identifier: MIT
 *
 * Answers a name that nobody knows with the one that was probably meant.
 */
#include "nearest.h"

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

namespace text
{

/* How many characters to insert, remove or replace to get from a to b. */
static size_t edit_distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/* The known name most like the given one; empty when none is similar. */
static std::string_view nearest(std::string_view given, const std::vector<std::string_view> &known)
{
    std::string_view best;
    size_t best_distance = given.size() / 3 + 2;
    for (const auto name : known) {
        const auto distance = edit_distance(given, name);
        if (distance < best_distance) {
            best_distance = distance;
            best = name;
        }
    }
    return best;
}

std::string expected_one_of(std::string_view given, const std::vector<std::string_view> &known)
{
    const auto best = nearest(given, known);
    return best.empty() ? fmt::format(", expected one of {}", joined(known)) : fmt::format(", did you mean {}?", best);
}

std::string joined(const std::vector<std::string_view> &names)
{
    return fmt::format("{}", fmt::join(names, ", "));
}

} // namespace text
