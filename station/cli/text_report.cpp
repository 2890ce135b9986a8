/* SPDX-License-Identifier: MIT
 *
 * What the station prints for people: fits the columns given, and says in words what it says in colour.
 */
#include <algorithm>
#include <cstring>
#include <fmt/format.h>

#include "command_line.h"
#include "common/text.h"
#include "report.h"

namespace station
{

/* A verdict padded to a width; colour does not count for it. */
static std::string verdict_word(verdict of, size_t width, bool colour)
{
    std::string word = fmt::format("{:<{}}", word_of(of), width);
    if (!colour)
        return word;
    const char *code = of == verdict::pass ? "32" : of == verdict::fail ? "31" : "33";
    return fmt::format("\033[{}m{}\033[0m", code, word);
}

/* The width of each column: of its heading or its longest word; 0 when it is not shown. */
static std::vector<size_t> widths_of(const outcome &unit)
{
    std::vector<size_t> widths;
    for (size_t i = 0; i < unit.columns.size(); i++) {
        const char *heading = unit.columns[i].heading;
        size_t width = heading == nullptr ? 0 : std::strlen(heading);
        for (const port_outcome &port : unit.ports)
            width = heading == nullptr ? 0 : std::max(width, port.cells[i].display.size());
        widths.push_back(width);
    }
    return widths;
}

/* Each port with its values below it, where a table has no room. */
static std::string port_list(const outcome &unit, bool colour, size_t columns)
{
    const size_t indent = std::strlen(unit.row_name) + 2;
    std::string text;
    for (const port_outcome &port : unit.ports) {
        text += fmt::format("{} {}  {}\n", unit.row_name, port.port, verdict_word(port.verdict, 0, colour));
        std::string values;
        for (size_t i = 0; i < unit.columns.size(); i++)
            if (unit.columns[i].heading != nullptr)
                values +=
                    fmt::format("{}{} {}", values.empty() ? "" : ", ", unit.columns[i].heading, port.cells[i].display);
        for (const std::string &line : {values, port.reason})
            if (!line.empty())
                text += std::string(indent, ' ') + common::wrapped(line, indent, columns) + "\n";
    }
    return text;
}

/* Reasons stand after the other columns, or below them when little room is left. */
static std::string port_table(const outcome &unit, bool colour, size_t columns)
{
    const size_t last_reason_column = columns * 2 / 5;
    const std::vector<size_t> widths = widths_of(unit);
    const size_t first_width = std::strlen(unit.row_name);
    std::string text = fmt::format("{}  verdict   ", unit.row_name);
    size_t reason_column = first_width + 14;
    for (size_t i = 0; i < widths.size(); i++)
        if (widths[i] > 0) {
            text += fmt::format("  {:>{}}", unit.columns[i].heading, widths[i]);
            reason_column += 2 + widths[i];
        }
    if (reason_column > columns)
        return port_list(unit, colour, columns);
    const bool below = reason_column > last_reason_column;
    text += reason_column + std::strlen("  reason") > columns ? "\n" : "  reason\n";
    for (const port_outcome &port : unit.ports) {
        const bool alone = reason_column == first_width + 14 && port.reason.empty();
        text += fmt::format("{:>{}}  {}", port.port, first_width, verdict_word(port.verdict, alone ? 0 : 10, colour));
        for (size_t i = 0; i < widths.size(); i++)
            if (widths[i] > 0)
                text += fmt::format("  {:>{}}", port.cells[i].display, widths[i]);
        const size_t indent = below ? first_width + 2 : reason_column;
        if (!port.reason.empty())
            text += (below ? "\n" + std::string(indent, ' ') : "  ") + common::wrapped(port.reason, indent, columns);
        text += "\n";
    }
    return text;
}

std::string text_report(const outcome &unit, bool colour, size_t columns)
{
    std::string text;
    if (!unit.ports.empty())
        text += common::wrapped(unit.title, 0, columns) + "\n\n" + port_table(unit, colour, columns) + "\n";
    text += unit.text;
    if (unit.verdict != verdict::no_verdict)
        text += fmt::format("{}  {}\n", verdict_word(unit.verdict, 0, colour),
                            common::wrapped(unit.summary, std::strlen(word_of(unit.verdict)) + 2, columns));
    return text;
}

static std::string list_row(const char *name, const std::string &type, const std::string &size, const char *help,
                            size_t columns)
{
    constexpr size_t help_column = 35;
    if (columns < 2 * help_column)
        return fmt::format("{}\n    {}\n", name, common::wrapped(help, 4, columns));
    return fmt::format("{:<14}  {:>4}  {:>11}  {}\n", name, type, size, common::wrapped(help, help_column, columns));
}

/* A narrow screen has room for names and help only. */
std::string list_text(size_t columns)
{
    std::string text = list_row("subcommand", "type", "reply bytes", "what it does", columns);
    for (const command &row : commands()) {
        const std::string type = row.type ? std::to_string(*row.type) : row.decode ? "any" : "-";
        const std::string size = row.type ? std::to_string(row.payload_size) : row.decode ? "as sent" : "-";
        text += list_row(row.name, type, size, row.help, columns);
    }
    for (const tool &row : tools())
        text += list_row(row.name, "-", "-", row.help, columns);
    return text;
}

} // namespace station
