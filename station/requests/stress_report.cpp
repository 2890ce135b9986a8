/* SPDX-License-Identifier: MIT
 *
 * What the stress tests share.
 */
#include "stress_report.h"

#include <algorithm>
#include <fmt/format.h>

#include "common/words.h"

namespace station
{

const option PORTS_OPTION{.name = "--ports",
                          .help = "names of the ports that the reply lists by position, as in 1-24,27",
                          .values = arity::text,
                          .least = 1,
                          .most = FACMSG_MAX_PORTS,
                          .set = set_own_list};

static constexpr code_sentence RESULTS[] = {
    {0, ""},
    {FACMSG_STRESS_NOT_SUPPORTED, "the host lacks a driver function; log-level 1 shows which"},
    {FACMSG_STRESS_NO_PORT, "the switch has no port of this kind"},
    {FACMSG_STRESS_NO_MEMORY, "the service ran out of memory"},
};

/* The stage's sentence; null for a stage that the test does not have. */
static const char *sentence_of(code_table stages, uint32_t stage)
{
    const auto row = std::ranges::find(stages, stage, &code_sentence::code);
    return row == stages.end() ? nullptr : row->sentence;
}

static bool judges_ports(const stress_kind &kind, uint32_t stage)
{
    return std::ranges::find(kind.judged_stages, stage) != kind.judged_stages.end();
}

/* A test that stopped has not judged what did not fail. */
static void unmake_passes(port_outcome &row)
{
    if (row.verdict == verdict::pass)
        row.verdict = verdict::not_tested;
    for (check &entry : row.checks)
        if (entry.verdict == verdict::pass)
            entry.verdict = verdict::not_tested;
}

static void add_rows(outcome &unit, const stress_kind &kind, const stress_head &head,
                     const std::vector<uint32_t> &names,
                     const std::function<void(port_outcome &row, uint32_t position)> &judge_entry)
{
    const bool named = names.size() == head.port_count;
    const bool complete = head.fail_stage == 0 || judges_ports(kind, head.fail_stage);
    unit.row_name = named ? "port" : "position";
    for (uint32_t i = 0; i < head.port_count; i++) {
        port_outcome &row = unit.ports.emplace_back(port_outcome{named ? names[i] : i + 1});
        judge_entry(row, i);
        if (!complete)
            unmake_passes(row);
    }
}

outcome judge_stress(const request &sent, const stress_kind &kind, const stress_head &head,
                     const std::function<void(port_outcome &row, uint32_t position)> &judge_entry)
{
    const std::vector<uint32_t> names = parse_list(PORTS_OPTION, own_value(sent, "--ports").value_or(""));
    const char *stage = sentence_of(kind.stages, head.fail_stage);
    outcome unit{.title = fmt::format("{} of unit {}", kind.title, head.unit),
                 .result = head.result,
                 .columns = kind.columns,
                 .members = {{"fail_stage", head.fail_stage}}};
    unit.summary = find_obstacle(RESULTS, head.result);
    if (unit.summary.empty())
        unit.summary = find_wrong_count(head.port_count);
    if (unit.summary.empty() && stage == nullptr)
        unit.summary = fmt::format("the reply's fail stage {} is unknown", head.fail_stage);
    if (!unit.summary.empty())
        return unit;
    if (!names.empty() && names.size() != head.port_count)
        unit.title += fmt::format(", by position because --ports names {} of {}", names.size(),
                                  common::counted(head.port_count, "port"));
    add_rows(unit, kind, head, names, judge_entry);
    judge_unit(unit, "fail stage", head.fail_stage == 0, judges_ports(kind, head.fail_stage) ? kind.unexplained : "");
    if (unit.verdict == verdict::fail && head.fail_stage != 0)
        unit.summary = fmt::format("stopped at stage {}: {}; {}", head.fail_stage, stage, unit.summary);
    return unit;
}

} // namespace station
