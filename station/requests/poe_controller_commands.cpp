/* SPDX-License-Identifier: MIT
 *
 * The firmware of the PoE controller: its versions and its upgrade.
 */
#include <fmt/format.h>

#include "families.h"

namespace station
{

static const option options[] = {
    {.name = "--yes", .help = "do not ask before it starts", .values = arity::flag, .set = set_own},
};

constinit const std::span<const option> poe_upgrade_options{options};

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
