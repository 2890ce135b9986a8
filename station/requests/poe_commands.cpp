/* SPDX-License-Identifier: MIT
 *
 * The tests of the PoE ports: four checks on every port, each with its code in the reply; and the VOP test, in which
 * the service only measures and what a value may be is judged here.
 */
#include <algorithm>
#include <fmt/format.h>

#include "facmsg.h"
#include "families.h"
#include "port_report.h"

namespace station
{

static const option OPTIONS[] = {UNIT_OPTION};
static constexpr option CLASSES_OPTION{.name = "--classes",
                                       .help =
                                           "classes that powered devices may have, as in 4,8; not judged if not given",
                                       .values = arity::text,
                                       .most = 254,
                                       .set = set_own_list};
static const option WITH_CLASSES[] = {UNIT_OPTION, CLASSES_OPTION};

constinit const std::span<const option> UNIT_OPTIONS{OPTIONS};
constinit const std::span<const option> POE_OPTIONS{WITH_CLASSES};

static constexpr code_sentence RESULTS[] = {
    {FACMSG_POE_PASS, ""},
    {FACMSG_POE_FAIL, ""},
    {FACMSG_POE_NOT_POSSIBLE, "the host lacks a driver function, or the switch has no port of this kind; "
                              "log-level 1 shows which"},
};

/* Why the head of a reply allows no verdict, or nothing. runs says how many ascending lists of ports follow each other.
 */
static std::string find_doubt(uint32_t result, const uint8_t *ports, uint32_t port_count, int runs)
{
    std::string doubt = find_obstacle(RESULTS, result);
    if (doubt.empty())
        doubt = find_wrong_count(port_count);
    return doubt.empty() ? find_wrong_port(ports_of_bytes(ports, port_count), runs) : doubt;
}

static constexpr const char *UNEXPLAINED = "the service still reports a failure"; /* without a failed port */

static constexpr code_sentence STATE_CODES[] = {
    {0, ""},
    {FACMSG_POE_STATE_UNREADABLE, "The power state could not be read; expected state 1."},
    {FACMSG_POE_STATE_0, "Power state 0; expected state 1."},
    {FACMSG_POE_STATE_2, "Power state 2; expected state 1."},
    {FACMSG_POE_STATE_OTHER, "Another power state, with {:#06x} in the upper half of its word; expected state 1."},
    {FACMSG_POE_STATE_3, "Power state 3; expected state 1."},
    {FACMSG_POE_STATE_4, "Power state 4; expected state 1."},
};

static constexpr code_sentence OVERLOAD_CODES[] = {
    {0, ""},
    {FACMSG_POE_LIMIT_FAILED,
     "The power limit could not be set to 3 W, or not be restored, in the last of 3 attempts."},
    {FACMSG_POE_OVERLOAD_UNREADABLE, "The overload flag could not be read in the last of 3 attempts."},
    {FACMSG_POE_NO_OVERLOAD, "No overload under a limit of 3 W in the last of 3 attempts, information word {:#06x}; "
                             "expected the load to trip it."},
};

static constexpr code_sentence POWER_OFF_CODES[] = {
    {0, ""},
    {FACMSG_POE_OFF_FAILED, "The output could not be switched off, or its power could not be read."},
    {FACMSG_POE_STILL_ON, "The port still gave power 1 s after it was switched off; expected none."},
};

static const char *const NOT_CHECKED = "-";

static void judge_cell(port_outcome &port, const char *name, code_table codes, uint32_t code, const char *column)
{
    port.cells.push_back({code, code == 0 ? "ok" : "FAIL"});
    judge_code(port, name, codes, code, column);
}

/* Without a list of classes every one that could be read is good. */
static void judge_class(port_outcome &port, uint32_t pd_class, const std::string &allowed)
{
    const std::vector<uint32_t> classes = parse_list(CLASSES_OPTION, allowed);
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
    judge_cell(port, "state", STATE_CODES, reply.state_code[k], "state_code");
    if (reply.state_code[k] != 0) {
        port.cells.insert(port.cells.end(), 2, {{}, NOT_CHECKED});
        list_untested(port, "class");
        list_untested(port, "overload");
    } else {
        judge_class(port, reply.pd_class[k], classes);
        judge_cell(port, "overload", OVERLOAD_CODES, reply.overload_code[k], "overload_code");
    }
    judge_cell(port, "power_off", POWER_OFF_CODES, reply.power_off_code[k], "power_off_code");
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
    unit.summary = find_doubt(reply.result, reply.ports, reply.port_count, sent.type == FACMSG_PORT_HPOE ? 2 : 1);
    if (!unit.summary.empty())
        return unit;
    const std::vector<uint32_t> ports = ports_of_bytes(reply.ports, reply.port_count);
    const std::string classes = own_value(sent, "--classes").value_or("");
    for (uint32_t k = 0; k < reply.port_count; k++)
        unit.ports.push_back(judge_entry(reply, k, ports[k], classes));
    judge_unit(unit, "result", reply.result == FACMSG_POE_PASS, UNEXPLAINED);
    return unit;
}

static const option VOP_FIELDS[] = {
    UNIT_OPTION,
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

constinit const std::span<const option> VOP_OPTIONS{VOP_FIELDS};

static constexpr code_sentence VOP_CODES[] = {
    {0, ""},
    {1, "A VOP query failed; expected three to succeed."},
};

/* What a VOP value has to be. */
struct value_limits {
    std::optional<std::string> least, most;
    explicit value_limits(const request &sent) : least(own_value(sent, "--min")), most(own_value(sent, "--max")) {}
    bool any() const
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
    unit.summary = find_doubt(reply.result, reply.ports, reply.port_count, 1);
    if (!unit.summary.empty())
        return unit;
    const std::vector<uint32_t> ports = ports_of_bytes(reply.ports, reply.port_count);
    const value_limits limits(sent);
    if (limits.any())
        unit.title += ": values of " + limits.text();
    for (uint32_t k = 0; k < reply.port_count; k++) {
        port_outcome &port =
            unit.ports.emplace_back(port_outcome{ports[k], {{reply.vop_status[k]}, {reply.vop_value[k]}}});
        judge_code(port, "vop", VOP_CODES, reply.vop_status[k], "vop_status");
        if (limits.any())
            judge_value(port, reply.vop_value[k], limits);
    }
    judge_unit(unit, "result", reply.result == FACMSG_POE_PASS, UNEXPLAINED);
    return unit;
}

} // namespace station
