/* SPDX-License-Identifier: MIT
 *
 * What a subcommand says on stderr while it waits for others.
 */
#include "notice.h"

#include <fmt/format.h>
#include <unistd.h>

#include "common/terminal.h"

namespace station
{

notice::notice(std::string speaker, bool line_wanted)
    : speaker_(std::move(speaker)), lively_(line_wanted && common::terminal_of(STDERR_FILENO).lively)
{
}

notice::~notice()
{
    clear();
}

void notice::show(const std::string &sentence)
{
    const auto now = std::chrono::steady_clock::now();
    if (sentence != shown_) {
        clear();
        shown_ = sentence;
        since_ = now;
        say(sentence);
    }
    if (lively_)
        common::rewrite_line(STDERR_FILENO,
                             fmt::format("{}: waiting, {} s", speaker_,
                                         std::chrono::duration_cast<std::chrono::seconds>(now - since_).count()));
}

void notice::clear()
{
    if (lively_ && !shown_.empty())
        common::clear_line(STDERR_FILENO);
    shown_.clear();
}

void notice::say(const std::string &sentence) const
{
    common::say(fmt::format("facmsg-station: {}: {}", speaker_, sentence));
}

} // namespace station
