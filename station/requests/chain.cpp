/* SPDX-License-Identifier: MIT
 *
 * The serpentine chain: who is at fault.
 */
#include "chain.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/count.h"
#include "port_report.h"

namespace station
{

/* One fact is one failure: the other count of the port is then no evidence of its own. */
static void fail_once(port_outcome &row, const std::string &reason)
{
    add_check(row, "transmitted", verdict::fail, reason);
    list_untested(row, "received");
}

static std::string both_counts(uint32_t count)
{
    return "Transmitted and received " + text::counted(count, "frame");
}

void frame_chain::trust(int64_t least, int64_t most)
{
    least_ = least;
    most_ = most;
}

/* The port before handed on as many frames as it counted. */
void frame_chain::judge_by_expectation(port_outcome &row, const chain_link &link)
{
    const auto judge_count = [&](const char *name, const char *verb, bool wrong, uint32_t count) {
        const std::string reason = fmt::format("{} {}; expected {}.", verb, text::counted(count, "frame"), expected_);
        add_check(row, name, wrong ? verdict::fail : verdict::pass, wrong ? reason : "");
    };
    if (link.wrong_transmitted && link.wrong_received && link.transmitted == link.received) {
        fail_once(row, fmt::format("{}; expected {}.", both_counts(link.received), expected_));
    } else {
        judge_count("transmitted", "Transmitted", link.wrong_transmitted, link.transmitted);
        judge_count("received", "Received", link.wrong_received, link.received);
    }
    const auto [least, most] = std::minmax({least_, most_, int64_t{link.transmitted}, int64_t{link.received}});
    if (link.wrong_received)
        trust(least, most);
    else
        trust(link.received, link.received);
}

/* The port before counted a wrong number or damaged frames, so either its counter or the wire is at fault. This port's
 * counts tell which, if they agree. */
void frame_chain::judge_in_doubt(port_outcome &row, const chain_link &link)
{
    const auto [fewer, more] = std::minmax({int64_t{link.transmitted}, int64_t{link.received}});
    if (fewer != more) {
        fail_once(row, fmt::format("Transmitted {} and received {}; expected equal counts.",
                                   text::counted(link.transmitted, "frame"), link.received));
        trust(fewer, more);
    } else if (link.received == expected_) {
        add_check(row, "transmitted", verdict::pass);
        add_check(row, "received", verdict::pass);
        trust(fewer, more);
    } else if (fewer >= least_ && more <= most_) {
        add_check(row, "transmitted", verdict::untested,
                  both_counts(link.received) + "; the port before counted wrong and is no measure for that.");
        list_untested(row, "received");
        trust(fewer, more);
    } else {
        fail_once(row, fmt::format("{}; expected {} to {} by the ports before.", both_counts(link.received),
                                   std::max<int64_t>(least_, 0), most_));
        trust(std::min(least_, fewer), std::max(most_, more));
    }
}

void frame_chain::judge(port_outcome &row, chain_link link)
{
    if (!link.wrong_transmitted)
        link.transmitted = expected_;
    if (!link.wrong_received)
        link.received = expected_;
    if (least_ == most_)
        judge_by_expectation(row, link);
    else
        judge_in_doubt(row, link);
    expected_ = link.received - link.damaged;
    least_ -= link.damaged;
}

} // namespace station
