/* SPDX-License-Identifier: MIT
 *
 * The port packet test: its options, and what its reply says about every port.
 *
 * The sentences claim no more than the reply tells: a port's code covers several causes, and when a port refuses its
 * settings the whole test ends before any frame is sent, so that the other ports' codes are no results.
 */
#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "families.h"

namespace station
{

static constexpr std::array<choice, 6> speeds{
    {{"10M", 1}, {"100M", 2}, {"1G", 3}, {"2.5G", 12}, {"5G", 13}, {"10G", 4}}};
static constexpr std::array<choice, 2> media{{{"copper", FACMSG_MEDIUM_COPPER}, {"fiber", FACMSG_MEDIUM_FIBER}}};

static constexpr std::array<option, 5> options{{
    {.name = "--unit", .help = "switch unit", .offset = offsetof(packet_test_record, unit)},
    {.name = "--any-speed",
     .help = "test ports of any speed, at the speed they have",
     .values = arity::flag,
     .offset = offsetof(packet_test_record, any_speed)},
    {.name = "--speed",
     .help = "speed",
     .offset = offsetof(packet_test_record, speed),
     .initial = 3,
     .most = 255,
     .choices = speeds},
    {.name = "--duplex",
     .help = "duplex code",
     .offset = offsetof(packet_test_record, duplex),
     .initial = 2,
     .most = 2},
    {.name = "--medium",
     .help = "medium",
     .offset = offsetof(packet_test_record, medium),
     .initial = FACMSG_MEDIUM_COPPER,
     .most = FACMSG_MEDIUM_FIBER,
     .choices = media},
}};

constinit const std::span<const option> packet_options{options};

static std::string settings_of(const packet_test_record &asked)
{
    if (asked.any_speed != 0)
        return "any speed";
    return fmt::format("speed {}, duplex {}, medium {}", name_of(speeds, asked.speed), asked.duplex,
                       name_of(media, asked.medium));
}

static std::string reason_of(uint32_t code, const packet_test_record &asked)
{
    switch (code) {
    case FACMSG_PORT_OK:
        return "";
    case FACMSG_PORT_NO_LINK:
        return "No link at the last check; expected a link. No frame was sent.";
    case FACMSG_PORT_TRANSMIT:
        return "A test frame could not be sent; expected 500 frames to be sent and to come back.";
    case FACMSG_PORT_RECEIVE_COUNT:
        return "The count of frames that came back was not 500 after the wait, or could not be read; expected exactly "
               "500.";
    case FACMSG_PORT_SET_STATUS:
        return fmt::format("The port refused {}; expected it to accept. No frame was sent.", settings_of(asked));
    case FACMSG_PORT_NOT_STARTED:
        return "The test did not start: the port's status could not be read, the CPU address was refused, or memory "
               "ran out; expected 500 frames to be sent and to come back.";
    default:
        return fmt::format("Code {} is unknown, so nothing can be said about this port; expected 0, 1, 2, 3, 6 or 7.",
                           code);
    }
}

/* The code is the link read before the change that another port refused. */
static std::string untested_reason(uint32_t code)
{
    const char *before = code == FACMSG_PORT_OK        ? ""
                         : code == FACMSG_PORT_NO_LINK ? " Before that it had no link."
                                                       : " Before that its status could not be read.";
    return fmt::format("Not tested: another port refused its settings.{}", before);
}

static bool is_known(uint32_t code)
{
    return code <= FACMSG_PORT_RECEIVE_COUNT || code == FACMSG_PORT_SET_STATUS || code == FACMSG_PORT_NOT_STARTED;
}

static port_outcome judge_port(uint32_t word, bool settings_refused, const packet_test_record &asked)
{
    const uint32_t port = FACMSG_RESULT_PORT(word);
    const uint32_t code = FACMSG_RESULT_CODE(word);
    if (!is_known(code))
        return {port, code, verdict::none, reason_of(code, asked)};
    if (settings_refused && code != FACMSG_PORT_SET_STATUS)
        return {port, code, verdict::none, untested_reason(code)};
    return {port, code, code == FACMSG_PORT_OK ? verdict::pass : verdict::fail, reason_of(code, asked)};
}

/* What is wrong with the frame of the reply, or nothing. Its ports may be read only when nothing is. */
static std::string find_nonsense(const packet_test_record &reply)
{
    if (reply.result != FACMSG_PACKET_PASS && reply.result != FACMSG_PACKET_FAIL)
        return fmt::format("the reply's result is {}; expected 0, 1 or 8", reply.result);
    if (reply.port_count == 0 || reply.port_count > FACMSG_MAX_PORTS)
        return fmt::format("the reply counts {} ports; expected 1 to {}", reply.port_count, int{FACMSG_MAX_PORTS});
    uint32_t previous = 0;
    for (uint32_t i = 0; i < reply.port_count; i++) {
        const uint32_t port = FACMSG_RESULT_PORT(reply.port_results[i]);
        if (port <= previous || port > FACMSG_MAX_PORTS)
            return fmt::format("entry {} of the reply names port {}; expected ascending ports from 1 to {}", i + 1,
                               port, int{FACMSG_MAX_PORTS});
        previous = port;
    }
    return "";
}

static std::string summary_of(const std::vector<port_outcome> &ports)
{
    const auto count = [&](verdict judged) { return std::ranges::count(ports, judged, &port_outcome::judged); };
    const auto untested = count(verdict::none);
    return fmt::format("{} ports {}: {} passed, {} failed{}", ports.size(), untested ? "selected" : "tested",
                       count(verdict::pass), count(verdict::fail),
                       untested ? fmt::format(", {} not tested", untested) : "");
}

/* The verdict on the unit, from the ports' verdicts and the result word, which must agree. */
static void judge_unit(outcome &unit)
{
    const auto unknown = std::ranges::find_if(unit.ports, [](const auto &port) { return !is_known(port.code); });
    const bool all_passed =
        std::ranges::all_of(unit.ports, [](const auto &port) { return port.judged == verdict::pass; });
    unit.summary = summary_of(unit.ports);
    if (unknown != unit.ports.end()) {
        unit.summary = fmt::format("the reply gives port {} the unknown code {}", unknown->port, unknown->code);
    } else if (unit.result == FACMSG_PACKET_FAIL) {
        unit.judged = verdict::fail;
        if (all_passed)
            unit.summary += "; the service still reports a failure, as when a port's status could not be read while "
                            "it waited for links";
    } else if (all_passed) {
        unit.judged = verdict::pass;
    } else {
        unit.summary = fmt::format("the reply contradicts itself: its result is 0 (passed), but {}", unit.summary);
    }
}

outcome decode_packet(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto asked = record_of<packet_test_record>(sent.payload);
    const auto reply = record_of<packet_test_record>(payload);
    outcome unit{.title = fmt::format("Packet test of unit {}: {}", asked.unit, settings_of(asked)),
                 .result = reply.result};
    if (reply.result == FACMSG_PACKET_NOT_POSSIBLE) {
        unit.summary = fmt::format("the test is not possible (result 8): the host lacks a driver function, the medium "
                                   "or duplex is not valid, or no port can do what was asked for ({})",
                                   settings_of(asked));
        return unit;
    }
    unit.summary = find_nonsense(reply);
    if (!unit.summary.empty())
        return unit;
    const std::span words(reply.port_results, reply.port_count);
    const bool settings_refused =
        std::ranges::any_of(words, [](uint32_t word) { return FACMSG_RESULT_CODE(word) == FACMSG_PORT_SET_STATUS; });
    for (const uint32_t word : words)
        unit.ports.push_back(judge_port(word, settings_refused, asked));
    judge_unit(unit);
    return unit;
}

} // namespace station
