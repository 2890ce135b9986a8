/* SPDX-License-Identifier: MIT
 *
 * The requests that control the service itself: three debug levels and the factory mode.
 */
#include <array>
#include <fmt/format.h>

#include "families.h"

namespace station
{

static constexpr std::array<option, 1> options{{
    {.name = "LEVEL",
     .help = "0 silent, 1 errors, 2 also traces",
     .offset = offsetof(debug_level_record, level),
     .least = std::numeric_limits<int32_t>::min(),
     .most = std::numeric_limits<int32_t>::max()},
}};

constinit const std::span<const option> level_options{options};

/* status is 0 for done and -1 for a driver that cannot; done and refused are the sentences for them. */
static outcome judge_status(int32_t status, const std::string &done, const std::string &refused)
{
    outcome unit{.result = status};
    if (status == 0) {
        unit.verdict = verdict::pass;
        unit.summary = done;
    } else if (status == -1) {
        unit.summary = refused;
    } else {
        unit.summary = fmt::format("the reply's status is {}; expected 0 or -1", status);
    }
    return unit;
}

static const char *level_name(uint32_t type)
{
    return type == FACMSG_MSG_DEBUG   ? "service's log level"
           : type == FACMSG_POE_DEBUG ? "PoE driver's debug level"
                                      : "port driver's debug level";
}

outcome decode_level(const request &sent, const std::vector<uint8_t> &reply)
{
    const auto record = record_of<debug_level_record>(reply);
    const char *what = level_name(sent.type);
    return judge_status(
        record.status, fmt::format("the {} is now {}", what, record.level),
        fmt::format("the {} was not set to {}: the host lacks the function or it failed", what, record.level));
}

outcome decode_factory_mode(const request &, const std::vector<uint8_t> &reply)
{
    return judge_status(record_of<enter_factory_record>(reply).status, "the switch is in factory mode",
                        "factory mode was not entered: the host lacks the function or it failed");
}

} // namespace station
