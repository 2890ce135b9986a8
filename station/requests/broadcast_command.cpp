/* SPDX-License-Identifier: MIT
 *
 * The broadcast test. The service only counts; how many FCS errors a port may have is judged here.
 */
#include <algorithm>
#include <fmt/format.h>

#include "common/words.h"
#include "families.h"
#include "port_report.h"

namespace station
{

static const option OPTIONS[] = {
    UNIT_OPTION,
    {.name = "--fcs-limit",
     .help = "FCS errors that a port may have, 0 if not given",
     .set = set_own_number,
     .limited = "fcs_errors",
     .judges_unasked = true},
};

constinit const std::span<const option> BROADCAST_OPTIONS{OPTIONS};

static constexpr code_sentence RESULTS[] = {
    {FACMSG_BROADCAST_PASS, ""},
    {FACMSG_BROADCAST_NO_LINK, ""},
    {FACMSG_BROADCAST_NOT_POSSIBLE, "the host lacks a driver function, no port takes part, or the burst of frames "
                                    "could not be sent; log-level 1 shows which"},
    {FACMSG_BROADCAST_NO_MEMORY, "the service ran out of memory"},
    {FACMSG_BROADCAST_NOT_BEGUN, "the switch did not go into its broadcast-test state"},
    {FACMSG_BROADCAST_FAIL, ""},
};

static constexpr code_sentence CODES[] = {
    {FACMSG_PORT_OK, ""},
    {FACMSG_PORT_NO_LINK, "No link; expected a link. Its FCS errors are not judged."},
    {FACMSG_PORT_NOT_STARTED, "The port's status could not be read. Its FCS errors are not judged."},
    {FACMSG_PORT_FCS_UNREADABLE, "The FCS error counter could not be read; expected a count."},
    {FACMSG_PORT_UNREADABLE, "Neither the port's status nor its FCS error counter could be read."},
};

/* The service reports a port without a status as failed only where the driver says that it has no link either. */
static bool fails_unseen(uint32_t code, const broadcast_test_record &reply)
{
    return code == FACMSG_PORT_NOT_STARTED && reply.result == FACMSG_BROADCAST_PASS;
}

static port_outcome judge_port(const broadcast_test_record &reply, uint32_t i, uint64_t limit)
{
    const uint32_t code = FACMSG_RESULT_CODE(reply.port_results[i]);
    const uint64_t fcs = reply.fcs_counts[i];
    port_outcome port{FACMSG_RESULT_PORT(reply.port_results[i]), {{code}, {{}, "-"}}};
    const char *const counted = "fcs_errors";
    const bool unreadable = code == FACMSG_PORT_FCS_UNREADABLE;
    if (unreadable)
        add_check(port, "link", verdict::pass);
    judge_code(port, unreadable ? counted : "link", CODES, code, "code");
    port.failed_here = fails_unseen(code, reply);
    if (code != FACMSG_PORT_OK) {
        if (!unreadable)
            list_untested(port, counted);
        return port;
    }
    port.cells[1] = {fcs};
    if (fcs <= limit)
        add_check(port, counted, verdict::pass);
    else
        fail_here(port, counted,
                  fmt::format("{}; expected {}{}.", common::counted(fcs, "FCS error"), limit ? "at most " : "", limit));
    return port;
}

/* The codes have no port numbers when the test ends here, but they can be counted. */
static std::string explain_no_link(const broadcast_test_record &reply)
{
    const std::span words(reply.port_results, reply.port_count);
    const auto count = [&](uint32_t code) { return std::ranges::count(words, code); };
    std::string odd;
    if (const auto others = count(FACMSG_PORT_OK); others > 0)
        odd += fmt::format(" ({} another link value than 0)", others);
    if (const auto unreadable = count(FACMSG_PORT_NOT_STARTED); unreadable > 0)
        odd += fmt::format(" (the status of {} could not be read)", unreadable);
    return fmt::format("{}, none of which reports link 1{}; expected a link on all; no frame was sent",
                       common::counted(words.size(), "port"), odd);
}

outcome decode_broadcast(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<broadcast_test_record>(payload);
    const uint64_t limit = std::stoull(own_value(sent, "--fcs-limit").value_or("0"));
    outcome unit{.title = fmt::format("Broadcast test of unit {}: at most {} a port", reply.unit,
                                      common::counted(limit, "FCS error")),
                 .result = reply.result,
                 .columns = {{"code", "code"}, {"fcs_errors", "FCS errors"}}};
    unit.summary = find_obstacle(RESULTS, reply.result);
    if (unit.summary.empty())
        unit.summary = find_wrong_count(reply.port_count);
    if (unit.summary.empty() && reply.result == FACMSG_BROADCAST_NO_LINK) {
        unit.verdict = verdict::fail;
        unit.summary = explain_no_link(reply);
    } else if (unit.summary.empty()) {
        unit.summary = find_wrong_port(ports_of_words(reply.port_results, reply.port_count));
    }
    if (!unit.summary.empty())
        return unit;
    for (uint32_t i = 0; i < reply.port_count; i++)
        unit.ports.push_back(judge_port(reply, i, limit));
    judge_unit(unit, "result", reply.result == FACMSG_BROADCAST_PASS,
               "the service still reports a port without link or counter");
    return unit;
}

} // namespace station
