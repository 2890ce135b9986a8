/* SPDX-License-Identifier: MIT
 *
 * The requests that control and test nothing: three debug levels, the factory mode, the firmware of the PoE controller.
 */
#include <array>
#include <fmt/format.h>

#include "families.h"

namespace station
{

static constexpr std::array<option, 1> LEVEL_FIELDS{{
    {.name = "LEVEL",
     .help = "0 silent, 1 errors, 2 also traces",
     .offset = offsetof(debug_level_record, level),
     .least = std::numeric_limits<int32_t>::min(),
     .most = std::numeric_limits<int32_t>::max()},
}};

constinit const std::span<const option> LEVEL_OPTIONS{LEVEL_FIELDS};

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

static const option UPGRADE_FIELDS[] = {
    {.name = "--yes", .help = "do not ask before it starts", .values = arity::flag, .set = set_own},
};

constinit const std::span<const option> POE_UPGRADE_OPTIONS{UPGRADE_FIELDS};

static outcome judge_result(uint32_t result, const std::string &done, const char *failed)
{
    switch (result) {
    case FACMSG_POE_MCU_DONE:
        return {.verdict = verdict::pass, .summary = done, .result = result};
    case FACMSG_POE_MCU_FAILED:
        return {.verdict = verdict::fail, .summary = failed, .result = result};
    case FACMSG_POE_MCU_NOT_SUPPORTED:
        return {.summary = "the host lacks the function (result 2)", .result = result};
    default:
        return {.summary = fmt::format("the reply's result is {}; expected 0, 1 or 2", result), .result = result};
    }
}

outcome decode_poe_upgrade(const request &, const std::vector<uint8_t> &payload)
{
    return judge_result(record_of<poe_mcu_upgrade_reply>(payload).result,
                        "the firmware of the PoE controller was upgraded; poe-version shows its version",
                        "the PoE driver reports that the upgrade failed; expected success");
}

/* Packed versions can be read in hexadecimal; the service's log has the decimal number. */
static std::string shown_version(uint32_t version)
{
    return fmt::format("{:#x} ({})", version, version);
}

outcome decode_poe_version(const request &, const std::vector<uint8_t> &payload)
{
    const auto reply = record_of<poe_mcu_ver_reply>(payload);
    outcome unit = judge_result(reply.result,
                                fmt::format("the PoE controller runs firmware version {}, available is {}",
                                            shown_version(reply.cur_ver), shown_version(reply.new_ver)),
                                "the PoE driver could not read the firmware versions; expected it to");
    if (reply.result == FACMSG_POE_MCU_DONE)
        unit.members = {{"running_version", reply.cur_ver}, {"available_version", reply.new_ver}};
    return unit;
}

} // namespace station
