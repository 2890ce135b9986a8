/* SPDX-License-Identifier: MIT
 *
 * A request from its row to its outcome.
 */
#include "carry_out.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "interruption.h"
#include "unreachable.h"

namespace station
{

void enter_directory(const std::string &directory)
{
    if (chdir(directory.c_str()) != 0)
        throw no_reply(
            exit_code::no_verdict, "unreachable",
            fmt::format("cannot enter directory '{}': {}", directory, std::generic_category().message(errno)));
}

static std::vector<uint8_t> send_and_wait(const request &sent, const std::string &directory, const patience &allowed,
                                          const std::function<void()> &tick)
{
    request answered = sent;
    switch (exchange(answered, allowed, tick)) {
    case exchange_end::replied:
        break;
    case exchange_end::failed:
        throw no_reply(exit_code::no_verdict, "unreachable", why_no_reply(sent, directory));
    case exchange_end::timed_out:
        throw no_reply(exit_code::no_verdict, "timeout",
                       "no reply in time; the service goes on with the request it has begun");
    case exchange_end::interrupted:
        throw no_reply(noted_code(), "interrupted", "interrupted; the service goes on with the request it has begun");
    }
    return answered.payload;
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
                  const std::function<void(const std::string &done)> &tick)
{
    const sender send = [&](const request &part, const std::string &done) {
        std::vector<uint8_t> reply = send_and_wait(part, directory, allowed, [&] { tick(done); });
        check_echo(row, part, reply);
        return reply;
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
