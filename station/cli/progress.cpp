/* SPDX-License-Identifier: MIT
 *
 * What is seen of a request while it is at work.
 */
#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include "common/terminal.h"

namespace station
{

static std::string expectation(const duration &expected)
{
    const std::string longest =
        expected.longest_s > 0 ? fmt::format(", up to {} s if ports fail", expected.longest_s) : "";
    if (expected.typical_s == 0)
        return "expected time unknown";
    return fmt::format("about {} s expected{}", expected.typical_s, longest);
}

progress::progress(const command &row, bool wanted) : row_(row), notice_(row.name, wanted)
{
    const common::terminal screen = common::terminal_of(STDERR_FILENO);
    lively_ = wanted && screen.lively;
    plain_ = wanted && screen.there && !screen.lively;
}

progress::~progress()
{
    if (lively_ && begun_)
        common::clear_line(STDERR_FILENO);
}

void progress::working(const std::string &done)
{
    const auto now = std::chrono::steady_clock::now();
    if (!begun_) {
        notice_.clear();
        start_ = now;
    }
    begun_ = true;
    if (plain_)
        common::say(fmt::format("{}: {}", row_.name, expectation(row_.expected)));
    plain_ = false;
    if (lively_)
        common::rewrite_line(STDERR_FILENO,
                             fmt::format("{}: {} s elapsed, {}", row_.name,
                                         std::chrono::duration_cast<std::chrono::seconds>(now - start_).count(),
                                         done.empty() ? expectation(row_.expected) : done));
}

void progress::waiting()
{
    begun_ = false;
    notice_.show(waiting_for_service);
}

notice &progress::others()
{
    return notice_;
}

} // namespace station
