/* SPDX-License-Identifier: MIT
 *
 * The PoE tests: four checks on every port, each with its code in the reply.
 */
#include <algorithm>
#include <fmt/format.h>

#include "families.h"
#include "poe_report.h"

namespace station
{

static const option options[] = {unit_option};
static constexpr option classes_option{.name = "--classes",
                                       .help =
                                           "classes that powered devices may have, as in 4,8; not judged if not given",
                                       .values = arity::text,
                                       .most = 254,
                                       .set = set_own_list};
static const option with_classes[] = {unit_option, classes_option};

constinit const std::span<const option> unit_options{options};
constinit const std::span<const option> poe_options{with_classes};

static constexpr code_sentence state_codes[] = {
    {0, ""},
    {FACMSG_POE_STATE_UNREADABLE, "The power state could not be read; expected state 1."},
    {FACMSG_POE_STATE_0, "Power state 0; expected state 1."},
    {FACMSG_POE_STATE_2, "Power state 2; expected state 1."},
    {FACMSG_POE_STATE_OTHER, "Another power state, with {:#06x} in the upper half of its word; expected state 1."},
    {FACMSG_POE_STATE_3, "Power state 3; expected state 1."},
    {FACMSG_POE_STATE_4, "Power state 4; expected state 1."},
};

static constexpr code_sentence overload_codes[] = {
    {0, ""},
    {FACMSG_POE_LIMIT_FAILED,
     "The power limit could not be set to 3 W, or not be restored, in the last of 3 attempts."},
    {FACMSG_POE_OVERLOAD_UNREADABLE, "The overload flag could not be read in the last of 3 attempts."},
    {FACMSG_POE_NO_OVERLOAD, "No overload under a limit of 3 W in the last of 3 attempts, information word {:#06x}; "
                             "expected the load to trip it."},
};

static constexpr code_sentence power_off_codes[] = {
    {0, ""},
    {FACMSG_POE_OFF_FAILED, "The output could not be switched off, or its power could not be read."},
    {FACMSG_POE_STILL_ON, "The port still gave power 1 s after it was switched off; expected none."},
};

static const char *const not_checked = "-";

static void judge_cell(port_outcome &port, const char *name, code_table codes, uint32_t code, const char *column)
{
    port.cells.push_back({code, code == 0 ? "ok" : "FAIL"});
    judge_code(port, name, codes, code, column);
}

/* Without a list of classes every one that could be read is good. */
static void judge_class(port_outcome &port, uint32_t pd_class, const std::string &allowed)
{
    const std::vector<uint32_t> classes = parse_list(classes_option, allowed);
    port.cells.push_back({pd_class});
    if (pd_class == FACMSG_POE_CLASS_UNREADABLE)
        add_check(port, "class", verdict::fail, "The class of the powered device could not be read.");
    else if (!classes.empty() && std::ranges::find(classes, pd_class) == classes.end())
        fail_here(port, "class", fmt::format("Class {} of the powered device; expected {}.", pd_class, allowed));
    else
        add_check(port, "class", verdict::pass);
    port.checks.back().column = "pd_class";
}

/* Class and overload are only looked at in a good power state. */
static port_outcome judge_entry(const poe_test_reply &reply, uint32_t k, uint32_t number, const std::string &classes)
{
    port_outcome port{number};
    judge_cell(port, "state", state_codes, reply.state_code[k], "state_code");
    if (reply.state_code[k] != 0) {
        port.cells.insert(port.cells.end(), 2, {{}, not_checked});
        list_untested(port, "class");
        list_untested(port, "overload");
    } else {
        judge_class(port, reply.pd_class[k], classes);
        judge_cell(port, "overload", overload_codes, reply.overload_code[k], "overload_code");
    }
    judge_cell(port, "power_off", power_off_codes, reply.power_off_code[k], "power_off_code");
    return port;
}

static const char *title_of(uint32_t type)
{
    switch (type) {
    case FACMSG_PORT_POE:
        return "PoE test of unit {}";
    case FACMSG_PORT_HPOE:
        return "PoE test of unit {}: the high-power ports, then the PoE ports";
    default:
        return "Test-box PoE test of unit {}: the high-power ports";
    }
}

outcome decode_poe(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<poe_test_reply>(payload);
    outcome unit{
        .title = fmt::format(fmt::runtime(title_of(sent.type)), reply.unit),
        .result = reply.result,
        .columns = {
            {"state_code", "state"}, {"pd_class", "class"}, {"overload_code", "overload"}, {"power_off_code", "off"}}};
    if (sent.type == FACMSG_PBOX_HPOE && reply.result == FACMSG_POE_PASS && reply.port_count == 0) {
        unit.summary = "the switch has no high-power port, so nothing was tested";
        return unit;
    }
    unit.summary = find_poe_doubt(reply.result, reply.ports, reply.port_count, sent.type == FACMSG_PORT_HPOE ? 2 : 1);
    if (!unit.summary.empty())
        return unit;
    const std::vector<uint32_t> ports = ports_of_bytes(reply.ports, reply.port_count);
    const std::string classes = own_value(sent, "--classes").value_or("");
    for (uint32_t k = 0; k < reply.port_count; k++)
        unit.ports.push_back(judge_entry(reply, k, ports[k], classes));
    judge_unit(unit, "result", reply.result == FACMSG_POE_PASS, poe_unexplained);
    return unit;
}

} // namespace station
