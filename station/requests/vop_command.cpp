/* SPDX-License-Identifier: MIT
 *
 * The VOP test: the service only measures; what a value may be is judged here.
 */
#include <fmt/format.h>

#include "families.h"
#include "poe_report.h"

namespace station
{

static const option options[] = {
    unit_option,
    {.name = "--min",
     .help = "least VOP value that a port may have; not judged if not given",
     .set = set_own_number,
     .limited = "vop_value",
     .least_value = true},
    {.name = "--max",
     .help = "greatest VOP value that a port may have; not judged if not given",
     .set = set_own_number,
     .limited = "vop_value"},
};

constinit const std::span<const option> vop_options{options};

static constexpr code_sentence vop_codes[] = {
    {0, ""},
    {1, "A VOP query failed; expected three to succeed."},
};

/* What a VOP value has to be. */
struct value_limits {
    std::optional<std::string> least, most;
    explicit value_limits(const request &sent) : least(own_value(sent, "--min")), most(own_value(sent, "--max")) {}
    bool given() const
    {
        return least || most;
    }
    bool allow(uint32_t value) const
    {
        return (!least || value >= std::stoull(*least)) && (!most || value <= std::stoull(*most));
    }
    std::string text() const
    {
        return fmt::format("{}{}{}", least ? "at least " + *least : "", least && most ? " and " : "",
                           most ? "at most " + *most : "");
    }
};

static void judge_value(port_outcome &port, uint32_t value, const value_limits &limits)
{
    if (port.verdict != verdict::pass)
        list_untested(port, "vop_value");
    else if (limits.allow(value))
        add_check(port, "vop_value", verdict::pass);
    else
        fail_here(port, "vop_value", fmt::format("VOP value {}; expected {}.", value, limits.text()));
}

outcome decode_vop(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<vop_test_reply>(payload);
    outcome unit{.title = fmt::format("VOP test of unit {}", reply.unit),
                 .result = reply.result,
                 .columns = {{"vop_status", "status"}, {"vop_value", "value"}}};
    unit.summary = find_poe_doubt(reply.result, reply.ports, reply.port_count, 1);
    if (!unit.summary.empty())
        return unit;
    const std::vector<uint32_t> ports = ports_of_bytes(reply.ports, reply.port_count);
    const value_limits limits(sent);
    if (limits.given())
        unit.title += ": values of " + limits.text();
    for (uint32_t k = 0; k < reply.port_count; k++) {
        port_outcome &port =
            unit.ports.emplace_back(port_outcome{ports[k], {{reply.vop_status[k]}, {reply.vop_value[k]}}});
        judge_code(port, "vop", vop_codes, reply.vop_status[k], "vop_status");
        if (limits.given())
            judge_value(port, reply.vop_value[k], limits);
    }
    judge_unit(unit, "result", reply.result == FACMSG_POE_PASS, poe_unexplained);
    return unit;
}

} // namespace station
