/* SPDX-License-Identifier: MIT
 *
 * The requests that switch the speed or the medium of the ports, and the report of the FC/Ethernet ports.
 */
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "families.h"
#include "port_report.h"

namespace station
{

static const option OPTIONS[] = {
    UNIT_OPTION,
    {.name = "--speed",
     .help = "speed to set",
     .offset = offsetof(switch_test_record, setting),
     .initial = 4,
     .choices = SPEED_NAMES},
};

constinit const std::span<const option> SWITCH_SPEED_OPTIONS{OPTIONS};

static constexpr code_sentence RESULTS[] = {
    {FACMSG_SWITCH_PASS, ""},
    {FACMSG_SWITCH_FAIL, ""},
    {FACMSG_SWITCH_NOT_POSSIBLE, "the host lacks a driver function (log-level 1 shows which), or the switch has no "
                                 "port of this kind"},
};

static constexpr code_sentence CODES[] = {
    {FACMSG_PORT_OK, ""},
    {FACMSG_PORT_MEDIUM, "The medium could not be read or set; expected it to change."},
    {FACMSG_PORT_SET_STATUS, "The port's status could not be read, or it refused the speed; expected it to accept."},
};

/* The ports of the reply, judged by their codes; a summary tells that there is no verdict. */
static outcome read_reply(const switch_test_record &reply, const std::string &title)
{
    outcome unit{.title = title, .result = reply.result, .columns = {{"code", "code"}}};
    unit.summary = find_obstacle(RESULTS, reply.result);
    if (unit.summary.empty())
        unit.summary = find_wrong_count(reply.port_count);
    if (!unit.summary.empty())
        return unit;
    unit.summary = find_wrong_port(ports_of_words(reply.port_results, reply.port_count));
    for (const uint32_t word : std::span(reply.port_results, unit.summary.empty() ? reply.port_count : 0)) {
        const uint32_t code = FACMSG_RESULT_CODE(word);
        judge_code(unit.ports.emplace_back(port_outcome{FACMSG_RESULT_PORT(word), {{code}}}), "switch", CODES, code,
                   "code");
    }
    return unit;
}

static outcome decode_switch(const switch_test_record &reply, const std::string &title)
{
    outcome unit = read_reply(reply, title);
    if (unit.summary.empty())
        judge_unit(unit, "result", reply.result == FACMSG_SWITCH_PASS, "the service still reports a failure");
    return unit;
}

outcome decode_switch_speed(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto settings = record_of<switch_test_record>(sent.payload);
    return decode_switch(record_of<switch_test_record>(payload),
                         fmt::format("Speed of the 1G/10G ports of unit {} set to {}", settings.unit,
                                     name_of(SPEED_NAMES, settings.setting)));
}

outcome decode_switch_medium(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<switch_test_record>(payload);
    outcome unit = decode_switch(reply, fmt::format("Medium of the combo ports of unit {} changed over",
                                                    record_of<switch_test_record>(sent.payload).unit));
    if (unit.verdict == verdict::pass)
        unit.summary += fmt::format("; the last one's medium is now {}", name_of(MEDIUM_NAMES, reply.setting));
    return unit;
}

outcome decode_fc_report(const request &, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<switch_test_record>(payload);
    outcome unit = read_reply(reply, "");
    unit.columns.clear();
    if (!unit.summary.empty()) {
        unit.members = {{"fc_ports", std::vector<common::value>()}}; /* a plan may have a limit on them */
        return unit;
    }
    unit.verdict = verdict::unjudged;
    const std::vector<uint32_t> ports = ports_of_words(reply.port_results, reply.port_count);
    unit.summary = fmt::format("FC/Ethernet ports: {}; the last one {} speed code 7, 8 or 9", fmt::join(ports, ", "),
                               reply.setting == 0 ? "offers" : "does not offer");
    unit.members = {{"fc_ports", std::vector<common::value>(ports.begin(), ports.end())},
                    {"last_offers_speed_7_8_or_9", reply.setting == 0}};
    unit.ports.clear();
    return unit;
}

outcome decode_unsupported(const request &, const std::vector<uint8_t> &)
{
    return {.summary = "the service answered a request that it is not known to support"};
}

} // namespace station
