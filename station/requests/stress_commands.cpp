/* SPDX-License-Identifier: MIT
 *
 * The stress tests. A reply to one with traffic tells counts, the low 32 bits of the switch's counters, only of ports
 * that failed.
 */
#include <algorithm>
#include <fmt/format.h>

#include "chain.h"
#include "common/words.h"
#include "families.h"
#include "stress_report.h"

namespace station
{

static const option OPTIONS[] = {UNIT_OPTION, PORTS_OPTION};

const std::span<const option> STRESS_OPTIONS{OPTIONS};

static constexpr code_sentence STAGES[] = {
    {FACMSG_STAGE_PASSED, ""},
    {FACMSG_STAGE_SPEED, "a port refused its speed"},
    {FACMSG_STAGE_LINK, "the links did not come up and stay up for 8 s"},
    {FACMSG_STAGE_VLAN_SETUP, "the test's VLANs could not be set up"},
    {FACMSG_STAGE_TRANSMIT, "the CPU could not send the test's frames"},
    {FACMSG_STAGE_VLAN_REMOVAL, "the test's VLANs could not be removed"},
    {FACMSG_STAGE_STATISTICS, "wrong frame counts or FCS errors, in the last of 3 passes"},
    {FACMSG_STAGE_LOOPBACK, "a port's PHY loopback could not be set"},
    {FACMSG_STAGE_LOOPBACK_RESTORE, "a port's PHY loopback could not be restored"},
};

static const char *const UNEXPLAINED = "no port is named as the cause";
static const std::vector<column> COUNTS{{"received", nullptr}, {"transmitted", nullptr}, {"fcs_errors", nullptr}};

constexpr uint32_t COUNTED_STAGE[] = {FACMSG_STAGE_STATISTICS};
/* This test counts before it restores the loopback, and a failure there takes the place of one of the counts. */
constexpr uint32_t COUNTED_STAGES[] = {FACMSG_STAGE_STATISTICS, FACMSG_STAGE_LOOPBACK_RESTORE};

static const stress_kind FLOW{"Flow stress test", STAGES, COUNTED_STAGE, UNEXPLAINED, COUNTS};
static const stress_kind BROADCAST_FLOW{"Broadcast flow stress test", STAGES, COUNTED_STAGES, UNEXPLAINED, COUNTS};
static const stress_kind SERPENTINE{"Serpentine stress test", STAGES, COUNTED_STAGE,
                                    "no port is named as the cause, so the CPU received another number of frames from "
                                    "the last port than it sent into the first",
                                    COUNTS};

/* Whether a flag is one; if not, nothing can be said of the port. */
static bool is_flag(port_outcome &row, const char *name, uint8_t flag)
{
    if (flag > 1)
        add_check(row, name, verdict::no_verdict,
                  fmt::format("A flag is {}, so nothing can be said; expected 0 or 1.", flag));
    return flag <= 1;
}

/* Adds the check that a flag of the reply judges. */
static void judge_flag(port_outcome &row, const char *name, uint8_t flag, const std::string &reason)
{
    if (is_flag(row, name, flag))
        add_check(row, name, flag == 1 ? verdict::fail : verdict::pass, flag == 1 ? reason : "");
}

static cell counted(uint8_t flag, uint32_t count)
{
    return flag == 1 ? cell{count} : cell{};
}

/* The entries that both replies have. */
template <class Reply> static void judge_common(port_outcome &row, const Reply &reply, uint32_t i)
{
    judge_flag(row, "link", reply.port_down[i], "No link when the wait for links ended; expected a link.");
    judge_flag(row, "fcs_errors", reply.port_fcs_err[i],
               common::counted(reply.fcs[i], "FCS error") + "; expected none.");
}

/* The speeds that the test chose, by kind of port. */
static void add_speeds(outcome &unit, const speed_choice &codes)
{
    unit.members.push_back(
        {"speed_codes",
         std::vector<member>{{"copper", codes.copper}, {"extended_copper", codes.ex_copper}, {"fiber", codes.fiber}}});
    unit.title += fmt::format(": copper {}", name_of(SPEED_NAMES, codes.copper));
    if (codes.ex_copper != 255)
        unit.title += fmt::format(", extended copper {}", name_of(SPEED_NAMES, codes.ex_copper));
    unit.title += fmt::format(", fiber {}", name_of(SPEED_NAMES, codes.fiber));
}

outcome decode_flow(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<ess_flow_reply>(payload);
    const stress_head head{reply.result, reply.unit, reply.port_count, reply.fail_stage};
    outcome unit = judge_stress(
        sent, sent.type == FACMSG_ESS_FLOW ? FLOW : BROADCAST_FLOW, head, [&](port_outcome &row, uint32_t i) {
            row.cells = {counted(reply.port_cnt_err[i], reply.in_pkts[i]),
                         counted(reply.port_cnt_err[i], reply.ex_pkts[i]),
                         counted(reply.port_fcs_err[i], reply.fcs[i])};
            judge_common(row, reply, i);
            judge_flag(row, "counts", reply.port_cnt_err[i],
                       fmt::format("Received {} and transmitted {}; expected equal counts.",
                                   common::counted(reply.in_pkts[i], "frame"), reply.ex_pkts[i]));
        });
    add_speeds(unit, reply.speed_codes);
    return unit;
}

static std::vector<chain_link> links_of(const serpentine_flow_reply &reply)
{
    std::vector<chain_link> links;
    for (uint32_t i = 0; i < std::min<uint32_t>(reply.port_count, FACMSG_MAX_PORTS); i++)
        links.push_back({reply.port_ex_err[i] == 1, reply.port_in_err[i] == 1, reply.ex_pkts[i], reply.in_pkts[i],
                         reply.port_fcs_err[i] == 1 ? reply.fcs[i] : 0});
    return links;
}

/* A port has to receive and transmit what the one before it received undamaged; the first, what the CPU sent. */
outcome decode_serpentine(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<serpentine_flow_reply>(payload);
    const stress_head head{reply.result, reply.unit, reply.port_count, reply.fail_stage};
    frame_chain chain(reply.cpu_send_cnt, links_of(reply));
    outcome unit = judge_stress(sent, SERPENTINE, head, [&](port_outcome &row, uint32_t i) {
        row.cells = {counted(reply.port_in_err[i], reply.in_pkts[i]), counted(reply.port_ex_err[i], reply.ex_pkts[i]),
                     counted(reply.port_fcs_err[i], reply.fcs[i])};
        judge_common(row, reply, i);
        if (is_flag(row, "transmitted", reply.port_ex_err[i]) && is_flag(row, "received", reply.port_in_err[i]))
            chain.judge(row);
    });
    add_speeds(unit, reply.speed_codes);
    unit.members.push_back({"cpu_sent", reply.cpu_send_cnt});
    return unit;
}

/* The PRBS run of the fiber ports. What a status word means is the driver's matter, so it is judged only against a word
 * that is known to be good. */
static const option PRBS_FIELDS[] = {
    UNIT_OPTION,
    PORTS_OPTION,
    {.name = "--good-status",
     .help = "status word of a good port, hexadecimal; without it nothing is judged",
     .hex = true,
     .set = set_own_number},
};

const std::span<const option> PRBS_OPTIONS{PRBS_FIELDS};

static constexpr code_sentence PRBS_STAGES[] = {
    {0, ""},
    {FACMSG_PRBS_STAGE_SPEED, "a port refused its speed"},
    {FACMSG_PRBS_STAGE_LINK, "the links did not come up and stay up for 8 s"},
    {FACMSG_PRBS_STAGE_LOOPBACK, "a port's PHY loopback could not be set"},
    {FACMSG_PRBS_STAGE_LOOPBACK_RESTORE, "a port's PHY loopback could not be restored"},
};

constexpr uint32_t PRBS_JUDGED_STAGES[] = {FACMSG_PRBS_STAGE_LOOPBACK_RESTORE};

static const stress_kind PRBS{
    "PRBS test", PRBS_STAGES, PRBS_JUDGED_STAGES, "no port is named as the cause", {{"status", "status"}}};

outcome decode_prbs(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<prbs_test_reply>(payload);
    const stress_head head{reply.result, reply.unit, reply.port_count, reply.fail_stage};
    const bool has_status = head.fail_stage == 0 || head.fail_stage == FACMSG_PRBS_STAGE_LOOPBACK_RESTORE;
    const auto good = own_value(sent, "--good-status");
    outcome unit = judge_stress(sent, PRBS, head, [&](port_outcome &row, uint32_t i) {
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
