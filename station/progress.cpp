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

static std::string expectation(const duration &expected)
{
    const std::string longest =
        expected.longest_s > 0 ? fmt::format(", up to {} s if ports fail", expected.longest_s) : "";
    if (expected.typical_s == 0)
        return "expected time unknown";
    return fmt::format("about {} s expected{}", expected.typical_s, longest);
}

void show_progress(const command &row, int elapsed_s, const std::string &done)
{
    const std::string shown = fmt::format("{}{}: {} s elapsed, {}", rewrite, row.name, elapsed_s,
                                          done.empty() ? expectation(row.expected) : done);
    std::fputs(shown.c_str(), stderr);
    std::fflush(stderr);
}

void clear_progress()
{
    std::fputs(rewrite, stderr);
    std::fflush(stderr);
}

} // namespace station
