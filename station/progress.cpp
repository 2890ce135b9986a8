/* SPDX-License-Identifier: MIT
 *
 * The progress line: one line of stderr, rewritten in place.
 */
#include <cstdio>
#include <fmt/format.h>

#include "report.h"

namespace station
{

/* Return to the first column and erase the line. */
constexpr const char *rewrite = "\r\033[K";

void show_progress(const command &row, int elapsed_s)
{
    const std::string longest =
        row.expected.longest_s > 0 ? fmt::format(", up to {} s if ports fail", row.expected.longest_s) : "";
    fmt::print(stderr, "{}{}: {} s elapsed, about {} s expected{}", rewrite, row.name, elapsed_s,
               row.expected.typical_s, longest);
    std::fflush(stderr);
}

void clear_progress()
{
    fmt::print(stderr, "{}", rewrite);
    std::fflush(stderr);
}

} // namespace station
