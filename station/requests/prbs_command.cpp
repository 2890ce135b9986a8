/* SPDX-License-Identifier: MIT
 *
 * The PRBS run of the fiber ports. What a status word means is the driver's matter, so it is judged only against a word
 * that is known to be good.
 */
#include <fmt/format.h>

#include "common/words.h"
#include "families.h"
#include "stress_report.h"

namespace station
{

static const option options[] = {
    unit_option,
    ports_option,
    {.name = "--good-status",
     .help = "status word of a good port, hexadecimal; without it nothing is judged",
     .hex = true,
     .set = set_own_number},
};

const std::span<const option> prbs_options{options};

static constexpr code_sentence stages[] = {
    {0, ""},
    {FACMSG_PRBS_STAGE_SPEED, "a port refused its speed"},
    {FACMSG_PRBS_STAGE_LINK, "the links did not come up and stay up for 8 s"},
    {FACMSG_PRBS_STAGE_LOOPBACK, "a port's PHY loopback could not be set"},
    {FACMSG_PRBS_STAGE_LOOPBACK_RESTORE, "a port's PHY loopback could not be restored"},
};

constexpr uint32_t judged_stages[] = {FACMSG_PRBS_STAGE_LOOPBACK_RESTORE};

static const stress_kind prbs{
    "PRBS test", stages, judged_stages, "no port is named as the cause", {{"status", "status"}}};

outcome decode_prbs(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<prbs_test_reply>(payload);
    const stress_head head{reply.result, reply.unit, reply.port_count, reply.fail_stage};
    const bool has_status = head.fail_stage == 0 || head.fail_stage == FACMSG_PRBS_STAGE_LOOPBACK_RESTORE;
    const auto good = own_value(sent, "--good-status");
    outcome unit = judge_stress(sent, prbs, head, [&](port_outcome &row, uint32_t i) {
        const uint32_t status = reply.prbs_status[i];
        row.cells = {has_status ? cell{status, fmt::format("{:#010x}", status)} : cell{{}, "-"}};
        if (has_status && !good)
            add_check(row, "status", verdict::unjudged);
        else if (has_status && status != std::stoull(*good))
            fail_here(row, "status", fmt::format("Status {:#010x}; expected {:#010x}.", status, std::stoull(*good)));
        else
            add_check(row, "status", verdict::pass);
    });
    if (unit.verdict == verdict::pass && !good) {
        unit.verdict = verdict::unjudged;
        unit.summary =
            fmt::format("status words of {}; --good-status judges them", common::counted(reply.port_count, "port"));
    }
    return unit;
}

} // namespace station
