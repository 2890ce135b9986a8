/* SPDX-License-Identifier: MIT
 *
 * The port packet test, also that of the test box: its options, and what its reply says about every port.
 *
 * The sentences claim no more than the reply tells: a code covers several causes, and what it means depends on how the
 * test ended. Sending overwrites the link check's code, and counting that of sending, so the codes tell how far it
 * came.
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
    {.name = "--any-speed",
     .help = "test ports of any speed, at the speed they have",
     .values = arity::flag,
     .offset = offsetof(packet_test_record, any_speed)},
    {.name = "--speed",
     .help = "speed",
     .offset = offsetof(packet_test_record, speed),
     .initial = 3,
     .most = 255,
     .choices = SPEED_NAMES,
     .not_beside = "--any-speed"},
    {.name = "--duplex",
     .help = "duplex code",
     .offset = offsetof(packet_test_record, duplex),
     .initial = 2,
     .most = 2,
     .not_beside = "--any-speed"},
    {.name = "--medium",
     .help = "medium",
     .offset = offsetof(packet_test_record, medium),
     .initial = FACMSG_MEDIUM_COPPER,
     .most = FACMSG_MEDIUM_FIBER,
     .choices = MEDIUM_NAMES,
     .not_beside = "--any-speed"},
};

constinit const std::span<const option> PACKET_OPTIONS{OPTIONS};

static constexpr code_sentence RESULTS[] = {
    {FACMSG_PACKET_PASS, ""},
    {FACMSG_PACKET_FAIL, ""},
    {FACMSG_PACKET_NOT_POSSIBLE, "the host lacks a driver function (log-level 1 shows which), the medium or duplex is "
                                 "not valid, or no port can do what was asked for"},
};

/* When all frames were sent and counted. */
static constexpr code_sentence COUNTED_CODES[] = {
    {FACMSG_PORT_OK, ""},
    {FACMSG_PORT_NO_LINK, "No link at the last check; expected a link. No frame was sent."},
    {FACMSG_PORT_RECEIVE_COUNT, "The count of frames that came back was not 500 after the wait, or could not be read; "
                                "expected exactly 500. With a cable, the fault may be at its other end."},
};

/* When the last port with link could not send, which ends the test before anything is counted; {} is that port. */
static constexpr code_sentence STOPPED_CODES[] = {
    {FACMSG_PORT_OK, "Sending stopped before anything was counted, as port {} could not send."},
    {FACMSG_PORT_NO_LINK, "No link at the last check; expected a link. No frame was sent."},
    {FACMSG_PORT_TRANSMIT, "A test frame could not be sent; expected 500 frames to be sent and to come back."},
};

/* When a port refused its settings, which ends the test before any frame is sent: the other ports' codes are those of
 * the link check before the change. */
static constexpr code_sentence REFUSED_CODES[] = {
    {FACMSG_PORT_OK, "Another port refused its settings."},
    {FACMSG_PORT_NO_LINK, "Another port refused its settings. Before that it had no link."},
    {FACMSG_PORT_SET_STATUS, "The port refused the speed, duplex and medium asked for; expected it to accept. No frame "
                             "was sent."},
    {FACMSG_PORT_NOT_STARTED, "Another port refused its settings. Before that its status could not be read."},
};

/* How a test ended: what the codes then mean, and which of them say nothing about their port. */
struct ending {
    code_table codes;
    std::vector<uint32_t> untested = {};
    uint32_t stopped_by = 0;
};

static std::string settings_of(const packet_test_record &settings)
{
    if (settings.any_speed != 0)
        return "any speed";
    return fmt::format("speed {}, duplex {}, medium {}", name_of(SPEED_NAMES, settings.speed), settings.duplex,
                       name_of(MEDIUM_NAMES, settings.medium));
}

static ending ending_of(std::span<const uint32_t> words)
{
    if (std::ranges::any_of(words, [](uint32_t word) { return FACMSG_RESULT_CODE(word) == FACMSG_PORT_SET_STATUS; }))
        return {REFUSED_CODES, {FACMSG_PORT_OK, FACMSG_PORT_NO_LINK, FACMSG_PORT_NOT_STARTED}};
    const auto last = std::ranges::find_if(
        words.rbegin(), words.rend(), [](uint32_t word) { return FACMSG_RESULT_CODE(word) != FACMSG_PORT_NO_LINK; });
    if (last != words.rend() && FACMSG_RESULT_CODE(*last) == FACMSG_PORT_TRANSMIT)
        return {STOPPED_CODES, {FACMSG_PORT_OK}, FACMSG_RESULT_PORT(*last)};
    return {COUNTED_CODES};
}

static port_outcome judge_port(uint32_t word, const ending &end)
{
    const uint32_t code = FACMSG_RESULT_CODE(word);
    port_outcome port{.port = FACMSG_RESULT_PORT(word), .cells = {{code}}};
    if (std::ranges::find(end.untested, code) == end.untested.end())
        judge_code(port, "packet", end.codes, code, "code");
    else
        add_check(port, "packet", verdict::not_tested,
                  fmt::format(fmt::runtime(std::ranges::find(end.codes, code, &code_sentence::code)->sentence),
                              end.stopped_by));
    return port;
}

/* Every port has the code when the test could not start, and then nothing at all is known of them. */
static bool never_started(std::span<const uint32_t> words)
{
    return std::ranges::all_of(words,
                               [](uint32_t word) { return FACMSG_RESULT_CODE(word) == FACMSG_PORT_NOT_STARTED; });
}

static std::string find_nonsense(const packet_test_record &reply)
{
    const std::string wrong_count = find_wrong_count(reply.port_count);
    return wrong_count.empty() ? find_wrong_port(ports_of_words(reply.port_results, reply.port_count)) : wrong_count;
}

outcome decode_packet(const request &sent, const std::vector<uint8_t> &payload)
{
    const auto settings = record_of<packet_test_record>(sent.payload);
    const auto reply = record_of<packet_test_record>(payload);
    outcome unit{.title = fmt::format("{} test of unit {}: {}",
                                      sent.type == FACMSG_PACKET_TEST ? "Packet" : "Test-box packet", settings.unit,
                                      settings_of(settings)),
                 .result = reply.result,
                 .columns = {{"code", "code"}}};
    unit.summary = find_obstacle(RESULTS, reply.result);
    if (reply.result == FACMSG_PACKET_NOT_POSSIBLE)
        unit.summary += fmt::format(" ({})", settings_of(settings));
    if (unit.summary.empty())
        unit.summary = find_nonsense(reply);
    if (!unit.summary.empty())
        return unit;
    const std::span words(reply.port_results, reply.port_count);
    if (never_started(words)) {
        unit.summary = fmt::format("the test could not start, so nothing is known of {} (code 7 at each): the CPU's "
                                   "address was refused, or the service ran out of memory",
                                   common::counted(words.size(), "port"));
        return unit;
    }
    const ending end = ending_of(words);
    for (const uint32_t word : words)
        unit.ports.push_back(judge_port(word, end));
    judge_unit(unit, "result", reply.result == FACMSG_PACKET_PASS,
               "the service still reports a failure: a port's status could not be read at the last check of the links");
    return unit;
}

} // namespace station
