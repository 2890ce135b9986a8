/* SPDX-License-Identifier: MIT
 *
 * What the station prints for programs. Members that do not apply are left out.
 */
#include "report.h"

#include "common/error_json.h"

namespace station
{

using nlohmann::ordered_json;

static ordered_json request_members(const command &row, const request &sent)
{
    ordered_json members{{"name", row.name}, {"type", sent.type}, {"payload_bytes", sent.payload.size()}};
    for (const option &field : row.options) {
        if (!is_payload_word(field))
            continue;
        const uint32_t word = word_at(sent.payload, field.offset);
        if (field.least < 0)
            members[member_name(field.name)] = static_cast<int32_t>(word);
        else
            members[member_name(field.name)] = word;
    }
    for (const auto &[name, value] : sent.own)
        members[member_name(name)] = value.empty() ? ordered_json(true) : ordered_json(value);
    return members;
}

static ordered_json port_members(const outcome &unit, const port_outcome &port)
{
    ordered_json members;
    members[unit.row_name] = port.port;
    for (size_t i = 0; i < unit.columns.size(); i++)
        members[unit.columns[i].member] = port.cells[i].value;
    members["verdict"] = word_of(port.judged);
    members["reason"] = port.reason;
    return members;
}

std::string json_report(const command &row, const request &sent, const outcome &unit)
{
    ordered_json report{{"request", request_members(row, sent)}};
    if (unit.result)
        report["result"] = *unit.result;
    report["verdict"] = word_of(unit.judged);
    report["exit_code"] = static_cast<int>(exit_code_of(unit.judged));
    report[unit.judged == verdict::none ? "error" : "summary"] = unit.summary;
    for (const auto &[name, value] : unit.members.items())
        report[name] = value;
    for (const port_outcome &port : unit.ports)
        report["ports"].push_back(port_members(unit, port));
    return report.dump(2) + "\n";
}

std::string json_error(const command *row, exit_code code, const std::string &sentence)
{
    const ordered_json request =
        row == nullptr ? ordered_json::object() : ordered_json{{"request", {{"name", row->name}}}};
    return common::error_json(code, sentence, word_of(verdict::none), request);
}

} // namespace station
