/* SPDX-License-Identifier: MIT
 *
 * A request from its row to its outcome.
 */
#include "carry_out.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <unistd.h>

#include "common/file.h"
#include "interruption.h"
#include "unreachable.h"

namespace station
{

void enter_directory(const std::string &directory)
{
    if (chdir(directory.c_str()) != 0)
        throw no_reply(
            exit_code::no_verdict, "unreachable",
            fmt::format("cannot enter directory '{}': {}", directory, common::path_fault(errno, "directory")));
}

static int64_t whole_s(milliseconds time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time).count();
}

/* The service does what it was sent, whoever waits for it. */
static no_reply given_up(const exchanged &result, const patience &allowed)
{
    const bool interrupted = result.end == exchange_end::interrupted;
    const exit_code code = interrupted ? noted_code() : exit_code::no_verdict;
    const std::string when_free = result.connected ? ", and will do it once it is free" : "";
    if (result.begun)
        return {code, interrupted ? "interrupted" : "timeout",
                fmt::format("{}; the service goes on with the request it has begun",
                            interrupted ? "interrupted"
                                        : fmt::format("no reply within {} s", whole_s(*allowed.for_reply)))};
    if (interrupted)
        return {code, "interrupted",
                fmt::format("interrupted; the service had not begun the request yet{}", when_free)};
    return {code, "busy",
            fmt::format("the service has not begun the request within {} s: it is still at work for somebody else, or "
                        "hangs{}",
                        whole_s(allowed.for_service), when_free)};
}

/* The client call takes any reply of the right size, so one that belongs to another request shows here: the service
 * sends back what was asked. */
static void check_echo(const command &row, const request &sent, const std::vector<uint8_t> &reply)
{
    for (const option &field : row.options) {
        if (!is_payload_word(field))
            continue;
        const uint32_t asked = word_at(sent.payload, field.offset);
        const uint32_t found = word_at(reply, field.offset);
        if (found != asked)
            throw no_reply(exit_code::no_verdict, "no-verdict",
                           fmt::format("the reply does not belong to this request: its {} word is {}; expected {}",
                                       field.name, found, asked));
    }
}

outcome carry_out(const command &row, const request &asked, const std::string &directory, const patience &allowed,
                  const audience &shown)
{
    patience left = allowed;
    const sender send = [&](const request &part, const std::string &done) {
        const socket_file before;
        const exchanged result = exchange(part, left, {[&] { shown.working(done); }, shown.waiting});
        if (result.end == exchange_end::failed) {
            const reason why = why_no_reply(part, directory, before, result);
            throw no_reply(exit_code::no_verdict, why.symptom, why.sentence);
        }
        if (result.end != exchange_end::replied)
            throw given_up(result, allowed);
        check_echo(row, part, result.reply);
        left.for_service -= result.waited;
        if (left.for_reply)
            *left.for_reply -= result.worked;
        return result.reply;
    };
    return row.transfer ? row.transfer(asked, send) : row.decode(asked, send(asked, ""));
}

outcome rehearse(const command &row, const request &asked)
{
    check_together(row, asked);
    request played = asked;
    if (const auto output = played.own.find("--output"); output != played.own.end())
        output->second = "/dev/null";
    if (row.transfer)
        return row.transfer(played, [](const request &part, const std::string &) { return part.payload; });
    return row.decode(played, std::vector<uint8_t>(row.payload_size));
}

} // namespace station
