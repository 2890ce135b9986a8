/* SPDX-License-Identifier: MIT
 *
 * The port packet test, also that of the test box: its options, and what its reply says about every port.
 *
 * The sentences claim no more than the reply tells: a port's code covers several causes, and when a port refuses its
 * settings the whole test ends before any frame is sent, so that the other ports' codes are no results.
 */
#include <algorithm>
#include <fmt/format.h>

#include "families.h"
#include "port_report.h"

namespace station
{

static const option options[] = {
    unit_option,
    {.name = "--any-speed",
     .help = "test ports of any speed, at the speed they have",
     .values = arity::flag,
     .offset = offsetof(packet_test_record, any_speed)},
    {.name = "--speed",
     .help = "speed",
     .offset = offsetof(packet_test_record, speed),
     .initial = 3,
     .most = 255,
     .choices = speed_names},
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
     .choices = medium_names},
};

constinit const std::span<const option> packet_options{options};

static constexpr code_sentence results[] = {
    {FACMSG_PACKET_PASS, ""},
    {FACMSG_PACKET_FAIL, ""},
    {FACMSG_PACKET_NOT_POSSIBLE, "the host lacks a driver function, the medium or duplex is not valid, or no port can "
                                 "do what was asked for"},
};

static constexpr code_sentence codes[] = {
    {FACMSG_PORT_OK, ""},
    {FACMSG_PORT_NO_LINK, "No link at the last check; expected a link. No frame was sent."},
    {FACMSG_PORT_TRANSMIT, "A test frame could not be sent; expected 500 frames to be sent and to come back."},
    {FACMSG_PORT_RECEIVE_COUNT, "The count of frames that came back was not 500 after the wait, or could not be read; "
                                "expected exactly 500."},
    {FACMSG_PORT_SET_STATUS, "The port refused the speed, duplex and medium asked for; expected it to accept. No frame "
                             "was sent."},
    {FACMSG_PORT_NOT_STARTED, "The test did not start: the port's status could not be read, the CPU address was "
                              "refused, or memory ran out; expected 500 frames to be sent and to come back."},
};

/* The codes of the other ports when one refused its settings: the link read before the change. */
static constexpr code_sentence untested_codes[] = {
    {FACMSG_PORT_OK, "Another port refused its settings."},
    {FACMSG_PORT_NO_LINK, "Another port refused its settings. Before that it had no link."},
    {FACMSG_PORT_NOT_STARTED, "Another port refused its settings. Before that its status could not be read."},
};

static std::string settings_of(const packet_test_record &asked)
{
    if (asked.any_speed != 0)
        return "any speed";
    return fmt::format("speed {}, duplex {}, medium {}", name_of(speed_names, asked.speed), asked.duplex,
                       name_of(medium_names, asked.medium));
}

static port_outcome judge_port(uint32_t word, bool settings_refused)
{
    const uint32_t code = FACMSG_RESULT_CODE(word);
    port_outcome port{.port = FACMSG_RESULT_PORT(word), .cells = {{code}}};
    const auto untested = std::ranges::find(untested_codes, code, &code_sentence::code);
    if (settings_refused && untested != std::end(untested_codes))
        add_check(port, "packet", verdict::untested, untested->sentence);
    else
        judge_code(port, "packet", codes, code);
    return port;
}

static std::string find_nonsense(const packet_test_record &reply)
{
    const std::string wrong_count = find_wrong_count(reply.port_count);
    return wrong_count.empty() ? find_wrong_port(ports_of_words(reply.port_results, reply.port_count)) : wrong_count;
}

outcome decode_packet(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto asked = record_of<packet_test_record>(sent.payload);
    const auto reply = record_of<packet_test_record>(payload);
    outcome unit{.title = fmt::format("{} test of unit {}: {}",
                                      sent.type == FACMSG_PACKET_TEST ? "Packet" : "Test-box packet", asked.unit,
                                      settings_of(asked)),
                 .result = reply.result,
                 .columns = {{"code", "code"}}};
    unit.summary = find_obstacle(results, reply.result);
    if (reply.result == FACMSG_PACKET_NOT_POSSIBLE)
        unit.summary += fmt::format(" ({})", settings_of(asked));
    if (unit.summary.empty())
        unit.summary = find_nonsense(reply);
    if (!unit.summary.empty())
        return unit;
    const std::span words(reply.port_results, reply.port_count);
    const bool settings_refused =
        std::ranges::any_of(words, [](uint32_t word) { return FACMSG_RESULT_CODE(word) == FACMSG_PORT_SET_STATUS; });
    for (const uint32_t word : words)
        unit.ports.push_back(judge_port(word, settings_refused));
    judge_unit(unit, "result", reply.result == FACMSG_PACKET_PASS,
               "the service still reports a failure, as when a port's status could not be read while it waited for "
               "links");
    return unit;
}

} // namespace station
