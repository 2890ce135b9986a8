/* SPDX-License-Identifier: MIT
 *
 * What the station prints for people: fits 80 columns, and says in words what it says in colour.
 */
#include <cstring>
#include <fmt/format.h>
#include <sstream>

#include "report.h"

namespace station
{

constexpr size_t columns = 80;

/* A verdict padded to a width; colour does not count for it. */
static std::string verdict_word(verdict judged, size_t width, bool colour)
{
    std::string word = fmt::format("{:<{}}", word_of(judged), width);
    if (!colour)
        return word;
    const char *code = judged == verdict::pass ? "32" : judged == verdict::fail ? "31" : "33";
    return fmt::format("\033[{}m{}\033[0m", code, word);
}

/* Breaks text between words; following lines begin below the first one's start. */
static std::string wrap(const std::string &text, size_t indent)
{
    std::string wrapped;
    size_t column = indent;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const bool first = wrapped.empty();
        if (!first && column + 1 + word.size() > columns) {
            wrapped += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (!first) {
            wrapped += " ";
            column++;
        }
        wrapped += word;
        column += word.size();
    }
    return wrapped;
}

static std::string port_table(const std::vector<port_outcome> &ports, bool colour)
{
    constexpr size_t reason_column = 24;
    std::string text = "port  verdict     code  reason\n";
    for (const port_outcome &port : ports) {
        std::string row = fmt::format("{:>4}  {}  {:>4}", port.port, verdict_word(port.judged, 10, colour), port.code);
        if (!port.reason.empty())
            row += "  " + wrap(port.reason, reason_column);
        text += row + "\n";
    }
    return text;
}

std::string text_report(const outcome &unit, bool colour)
{
    std::string text;
    if (!unit.ports.empty())
        text += unit.title + "\n\n" + port_table(unit.ports, colour) + "\n";
    text += unit.text;
    if (unit.judged != verdict::none)
        text += fmt::format("{}  {}\n", verdict_word(unit.judged, 0, colour),
                            wrap(unit.summary, std::strlen(word_of(unit.judged)) + 2));
    return text;
}

static std::string list_text()
{
    std::string text = "subcommand    type  reply bytes  what it does\n";
    for (const command &row : commands()) {
        const std::string type = row.fixed_type ? std::to_string(row.type) : row.decode ? "any" : "-";
        const std::string size = row.fixed_type ? std::to_string(row.payload_size) : row.decode ? "as sent" : "-";
        text += fmt::format("{:<12}  {:>4}  {:>11}  {}\n", row.name, type, size, wrap(row.help, 33));
    }
    return text;
}

static std::string list_json()
{
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const command &row : commands()) {
        nlohmann::ordered_json entry{{"name", row.name}, {"help", row.help}};
        if (row.fixed_type) {
            entry["type"] = row.type;
            entry["reply_bytes"] = row.payload_size;
        }
        rows.push_back(entry);
    }
    return nlohmann::ordered_json{{"subcommands", rows}}.dump(2) + "\n";
}

std::string list_report(bool json)
{
    return json ? list_json() : list_text();
}

} // namespace station
