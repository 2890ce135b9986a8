/* SPDX-License-Identifier: MIT
 *
 * Any request at all: type and payload as given, the reply in hexadecimal and without a verdict; and bytes in
 * hexadecimal.
 */
#include <algorithm>
#include <array>
#include <cctype>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <span>

#include "common/terminal.h"
#include "common/words.h"
#include "families.h"

namespace station
{

static bool is_blank(unsigned char letter)
{
    return std::isspace(letter) != 0;
}

std::optional<std::vector<uint8_t>> parse_hex(const std::string &text)
{
    std::string digits = text;
    std::erase_if(digits, is_blank);
    const bool valid = std::ranges::all_of(digits, [](unsigned char digit) { return std::isxdigit(digit) != 0; });
    if (!valid || digits.size() % 2 != 0)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string hex_dump(const std::vector<uint8_t> &bytes)
{
    constexpr size_t WIDTH = 16, SHOWN_WIDTH = 6 + 3 * WIDTH;
    const size_t width = common::stdout_columns() < SHOWN_WIDTH ? WIDTH / 2 : WIDTH;
    std::string text;
    std::string previous;
    bool skipping = false;
    for (size_t i = 0; i < bytes.size(); i += width) {
        const std::span line(bytes.data() + i, std::min(width, bytes.size() - i));
        const std::string shown = fmt::format("{:02x}", fmt::join(line, " "));
        if (shown != previous)
            text += fmt::format("{:04x}  {}\n", i, shown);
        else if (!skipping)
            text += "*\n";
        skipping = shown == previous;
        previous = shown;
    }
    return text;
}

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

static constexpr std::array<option, 3> OPTIONS{{
    {.name = "TYPE", .help = "request type", .set = set_type},
    {.name = "HEX",
     .help = "payload, pairs of hexadecimal digits, blanks allowed",
     .values = arity::any,
     .set = set_payload},
    {.name = "--size", .help = "zeros up to this size, the reply's", .most = FACMSG_MAX_PAYLOAD, .set = set_size},
}};

constinit const std::span<const option> RAW_OPTIONS{OPTIONS};

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
