/* SPDX-License-Identifier: MIT
 *
 * What the station prints for programs. Members that do not apply are left out.
 */
#include "report.h"

#include <nlohmann/json.hpp>

#include "command_line.h"
#include "common/program.h"

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

static ordered_json json_of(const std::vector<member> &members);

static ordered_json json_of(const member &one)
{
    if (const auto *single = std::get_if<common::value>(&one.content))
        return single->json();
    if (const auto *group = std::get_if<std::vector<member>>(&one.content))
        return json_of(*group);
    ordered_json list = ordered_json::array();
    for (const common::value &entry : std::get<std::vector<common::value>>(one.content))
        list.push_back(entry.json());
    return list;
}

static ordered_json json_of(const std::vector<member> &members)
{
    ordered_json object = ordered_json::object();
    for (const member &one : members)
        object[one.name] = json_of(one);
    return object;
}

static ordered_json port_members(const outcome &unit, const port_outcome &port)
{
    ordered_json members;
    members[unit.row_name] = port.port;
    for (size_t i = 0; i < unit.columns.size(); i++)
        members[unit.columns[i].member] = port.cells[i].value.json();
    members["verdict"] = word_of(port.verdict);
    members["reason"] = port.reason;
    return members;
}

std::string json_report(const command &row, const request &sent, const outcome &unit)
{
    ordered_json report{{"request", request_members(row, sent)}};
    if (unit.result)
        report["result"] = *unit.result;
    report["verdict"] = word_of(unit.verdict);
    report["exit_code"] = static_cast<int>(exit_code_of(unit.verdict));
    report[unit.verdict == verdict::no_verdict ? "error" : "summary"] = unit.summary;
    report.update(json_of(unit.members));
    for (const port_outcome &port : unit.ports)
        report["ports"].push_back(port_members(unit, port));
    return report.dump(2) + "\n";
}

std::string json_error(const command *row, exit_code code, const std::string &sentence)
{
    return common::error_json(code, sentence, word_of(verdict::no_verdict), row == nullptr ? nullptr : row->name);
}

std::string list_json()
{
    ordered_json rows = ordered_json::array();
    for (const command &row : commands()) {
        ordered_json entry{{"name", row.name}, {"help", row.help}};
        if (row.type) {
            entry["type"] = *row.type;
            entry["reply_bytes"] = row.payload_size;
        }
        rows.push_back(entry);
    }
    for (const tool &row : tools())
        rows.push_back({{"name", row.name}, {"help", row.help}});
    return ordered_json{{"subcommands", rows}}.dump(2) + "\n";
}

} // namespace station
