/* SPDX-License-Identifier: MIT
 *
 * Any request at all: type and payload as given, the reply in hexadecimal and without a verdict.
 */
#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "common/words.h"
#include "families.h"
#include "hex.h"

namespace station
{

static void set_type(request &sent, const option &field, const std::string &value)
{
    sent.type = static_cast<uint32_t>(parse_value(field, value));
}

static void set_payload(request &sent, const option &field, const std::string &value)
{
    const auto bytes = parse_hex(value);
    if (!bytes || bytes->size() > FACMSG_MAX_PAYLOAD)
        throw usage_error(fmt::format("{}: found '{}', allowed: pairs of hexadecimal digits for up to {} bytes",
                                      field.name, value, int{FACMSG_MAX_PAYLOAD}));
    sent.payload = *bytes;
}

static void set_size(request &sent, const option &field, const std::string &value)
{
    const auto size = static_cast<size_t>(parse_value(field, value));
    if (size < sent.payload.size())
        throw usage_error(fmt::format("{}: found '{}', allowed: not less than the {} of HEX", field.name, value,
                                      common::counted(sent.payload.size(), "byte")));
    sent.payload.resize(size);
}

static constexpr std::array<option, 3> options{{
    {.name = "TYPE", .help = "request type", .set = set_type},
    {.name = "HEX",
     .help = "payload, pairs of hexadecimal digits, blanks allowed",
     .values = arity::any,
     .set = set_payload},
    {.name = "--size", .help = "zeros up to this size, the reply's", .most = FACMSG_MAX_PAYLOAD, .set = set_size},
}};

constinit const std::span<const option> raw_options{options};

outcome decode_raw(const request &sent, const std::vector<uint8_t> &reply)
{
    const char *doubt = reply.empty() ? "; without a payload, a refusal of the request looks the same" : "";
    return {.verdict = verdict::unjudged,
            .summary = fmt::format("request type {} was answered with {}{}", sent.type,
                                   common::counted(reply.size(), "payload byte"), doubt),
            .text = hex_dump(reply),
            .members = {{"reply_hex", fmt::format("{:02x}", fmt::join(reply, ""))}}};
}

} // namespace station
