/* SPDX-License-Identifier: MIT
 *
 * The serpentine chain: who is at fault.
 */
#include "chain.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/words.h"
#include "port_report.h"

namespace station
{

/* One fact is one failure: the other count of the port is then no evidence of its own. */
static void fail_once(port_outcome &row, const std::string &reason)
{
    add_check(row, "transmitted", verdict::fail, reason);
    list_untested(row, "received");
}

static void add_both(port_outcome &row, verdict of, const std::string &reason = "")
{
    add_check(row, "transmitted", of, reason);
    add_check(row, "received", of);
}

static std::string both_counts(int64_t count)
{
    return "Transmitted and received " + common::counted(static_cast<uint64_t>(count), "frame");
}

frame_chain::frame_chain(uint32_t sent, std::vector<chain_link> links)
    : links_(std::move(links)), expected_(sent), trusted_(sent), least_(sent), most_(sent)
{
    int64_t expected = sent;
    for (chain_link &link : links_) {
        if (!link.wrong_transmitted)
            link.transmitted = expected;
        if (!link.wrong_received)
            link.received = expected;
        expected = link.received - link.damaged;
    }
}

void frame_chain::trust(int64_t count)
{
    trusted_ = least_ = most_ = count;
}

void frame_chain::doubt(const chain_link &link)
{
    least_ = std::min({least_, link.transmitted, link.received});
    most_ = std::max({most_, link.transmitted, link.received});
}

/* The port before handed on as many frames as it counted. */
void frame_chain::judge_by_expectation(port_outcome &row, const chain_link &link)
{
    const auto judge_count = [&](const char *name, const char *verb, bool wrong, int64_t count) {
        const std::string reason =
            fmt::format("{} {}; expected {}.", verb, common::counted(static_cast<uint64_t>(count), "frame"), expected_);
        add_check(row, name, wrong ? verdict::fail : verdict::pass, wrong ? reason : "");
    };
    if (link.wrong_transmitted && link.counted_alike(link.received)) {
        fail_once(row, fmt::format("{}; expected {}.", both_counts(link.received), expected_));
    } else {
        judge_count("transmitted", "Transmitted", link.wrong_transmitted, link.transmitted);
        judge_count("received", "Received", link.wrong_received, link.received);
    }
    if (link.wrong_received)
        doubt(link);
}

/* Whether the count that was last beyond doubt comes again at a later port. */
bool frame_chain::is_trusted_again(size_t port) const
{
    int64_t trusted = trusted_;
    for (; port + 1 < links_.size(); port++) {
        trusted -= links_[port].damaged;
        if (links_[port + 1].counted_alike(trusted))
            return true;
    }
    return false;
}

/* Whether the next port that differs from this one transmitted more than came to it: then the counts until there may be
 * those that are wrong. */
bool frame_chain::rises_after(size_t port) const
{
    int64_t handed_on = links_[port].received - links_[port].damaged;
    for (port++; port < links_.size() && links_[port].counted_alike(handed_on); port++)
        handed_on -= links_[port].damaged;
    return port < links_.size() && links_[port].transmitted > handed_on;
}

/* The port before counted a wrong number or damaged frames, so either its counter or the wire is at fault. The counts
 * of this port and of those after it tell which, if they agree. */
void frame_chain::judge_in_doubt(port_outcome &row, const chain_link &link)
{
    const int64_t count = link.received;
    const bool stands_alone = count != trusted_ && is_trusted_again(next_);
    const bool agrees = count == trusted_ || (!stands_alone && count == expected_ && !rises_after(next_));
    if (link.transmitted != count) {
        fail_once(row, fmt::format("Transmitted {} and received {}; expected equal counts.",
                                   common::counted(static_cast<uint64_t>(link.transmitted), "frame"), count));
    } else if (agrees) {
        add_both(row, verdict::pass);
        return trust(count);
    } else if (stands_alone) {
        fail_once(row, fmt::format("{}; expected {} as at ports before and after.", both_counts(count), trusted_));
    } else if (count >= least_ && count <= most_) {
        add_both(row, verdict::unjudged,
                 both_counts(count) + "; cannot be judged by the port before, which is in doubt.");
    } else {
        fail_once(row, fmt::format("{}; expected {} to {} by the ports before.", both_counts(count),
                                   std::max<int64_t>(least_, 0), most_));
    }
    doubt(link);
}

/* Adds a check for a count that the reply calls wrong though it is the expected one. */
static bool contradicts_itself(port_outcome &row, const char *name, bool wrong, int64_t count, int64_t expected)
{
    if (wrong && count == expected)
        add_check(row, name, verdict::no_verdict,
                  fmt::format("The reply marks the count of {} as wrong, but {} was expected, so nothing can be said.",
                              common::counted(static_cast<uint64_t>(count), "frame"), expected));
    return wrong && count == expected;
}

void frame_chain::judge(port_outcome &row)
{
    const chain_link &link = links_[next_];
    const bool nonsense = contradicts_itself(row, "transmitted", link.wrong_transmitted, link.transmitted, expected_) ||
                          contradicts_itself(row, "received", link.wrong_received, link.received, expected_);
    if (!nonsense && least_ == most_)
        judge_by_expectation(row, link);
    else if (!nonsense)
        judge_in_doubt(row, link);
    expected_ = link.received - link.damaged;
    trusted_ -= link.damaged;
    least_ -= link.damaged;
    next_++;
}

} // namespace station
