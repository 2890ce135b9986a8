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
    const std::string typical = row.expected.typical_s > 0 ? fmt::format("about {} s expected", row.expected.typical_s)
                                                           : "expected time unknown";
    fmt::print(stderr, "{}{}: {} s elapsed, {}{}", rewrite, row.name, elapsed_s, typical, longest);
    std::fflush(stderr);
}

void clear_progress()
{
    fmt::print(stderr, "{}", rewrite);
    std::fflush(stderr);
}

} // namespace station
