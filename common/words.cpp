/* SPDX-License-Identifier: MIT */
#include "words.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

namespace common
{

static std::string with_rest(int64_t number, const char *unit, int64_t rest, const char *smaller)
{
    return fmt::format("{} {}{}", number, unit, rest == 0 ? "" : fmt::format(" {} {}", rest, smaller));
}

/* How many characters to insert, remove, replace or swap with their neighbour to get from a to b. */
static size_t edit_distance(std::string_view a, std::string_view b)
{
    std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
    std::iota(rows[0].begin(), rows[0].end(), size_t{0});
    for (size_t i = 1; i <= a.size(); i++) {
        rows[i][0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const size_t replaced = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            rows[i][j] = std::min({replaced, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
        }
    }
    return rows[a.size()][b.size()];
}

static std::string_view letters_of(std::string_view name)
{
    name.remove_prefix(std::min(name.find_first_not_of('-'), name.size()));
    return name;
}

/* The known name most like this one, with at most a slip in three letters; empty when there is none. */
static std::string_view nearest(std::string_view name, const std::vector<std::string_view> &known)
{
    const std::string_view letters = letters_of(name);
    std::string_view best;
    size_t best_distance = std::max<size_t>(letters.size() / 3, 1) + 1;
    for (const auto candidate : known) {
        const auto distance = edit_distance(letters, letters_of(candidate));
        if (distance < best_distance && distance < letters.size()) {
            best_distance = distance;
            best = candidate;
        }
    }
    return best;
}

std::string counted(uint64_t count, std::string_view noun)
{
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
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

std::string joined(const std::vector<std::string_view> &names)
{
    return fmt::format("{}", fmt::join(names, ", "));
}

std::string expected_one_of(std::string_view name, const std::vector<std::string_view> &known)
{
    const auto best = nearest(name, known);
    return best.empty() ? fmt::format(", expected one of {}", joined(known)) : fmt::format(", did you mean {}?", best);
}

} // namespace common
