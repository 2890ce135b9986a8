/* SPDX-License-Identifier: MIT
 *
 * The front panel on the page: odd ports above even ones, as on the switch itself, in blocks of twelve. Blocks flow
 * like words, so that a panel of any size fits a screen and a sheet. A port's colour says what is known of it.
 */
#include <algorithm>

#include "page_data.h"
#include "report_parts.h"

namespace reports
{

struct panel_port {
    const port_finding *finding;
    int column, row;
};

struct panel_block {
    std::vector<panel_port> ports;
    int columns, rows;
};

/* The ports of one kind. */
struct panel_group {
    std::string name;
    std::vector<panel_block> blocks;
};

constexpr int MOST_COLUMNS = 6;     /* of a block */
constexpr size_t MOST_IN_A_ROW = 4; /* groups of up to so many ports are not stacked */

using port_list = std::vector<const port_finding *>;

struct named_ports {
    std::string name;
    port_list ports = {};
};

static std::vector<named_ports> by_group(const std::vector<port_finding> &ports)
{
    std::vector<named_ports> groups;
    for (const port_finding &finding : ports) {
        auto entry = std::ranges::find(groups, finding.port.group, &named_ports::name);
        if (entry == groups.end())
            entry = groups.insert(entry, {finding.port.group});
        entry->ports.push_back(&finding);
    }
    return groups;
}

/* Ports 2n-1 and 2n stand above each other; one whose partner is elsewhere stands alone. */
static std::vector<panel_block> blocks_of(const port_list &ports)
{
    const bool stacked = ports.size() > MOST_IN_A_ROW;
    std::vector<panel_block> blocks;
    int pair = -1;
    for (const port_finding *finding : ports) {
        const int row = stacked && finding->port.port % 2 == 0 ? 1 : 0;
        const bool is_partner = row == 1 && pair == finding->port.port - 1 && !blocks.empty();
        if (blocks.empty() || (!is_partner && blocks.back().columns == MOST_COLUMNS))
            blocks.push_back({{}, 0, stacked ? 2 : 1});
        blocks.back().columns += is_partner ? 0 : 1;
        blocks.back().ports.push_back({finding, blocks.back().columns - 1, row});
        pair = row == 0 ? finding->port.port : -1;
    }
    return blocks;
}

/* Groups by their first port; the ports are in the order of their numbers. Points into them. */
static std::vector<panel_group> lay_out(const std::vector<port_finding> &ports)
{
    std::vector<panel_group> groups;
    for (const named_ports &group : by_group(ports))
        groups.push_back({group.name.empty() ? "Ports" : group.name, blocks_of(group.ports)});
    return groups;
}

/* How a port looks: its colour in the template, and its mark, for which there is room for five letters. */
struct look {
    port_state state;
    const char *style, *mark, *meaning;
};
constexpr look LOOKS[] = {
    {port_state::failed, "fail", "FAIL", "failed"},
    {port_state::retried, "warn", "RETRY", "failed at first"},
    {port_state::passed_so_far, "part", "PART", "passed so far, something is missing"},
    {port_state::passed, "pass", "PASS", "passed all that the plan asks"},
    {port_state::unknown, "none", "–", "nothing known"},
};

static const look &look_of(port_state state)
{
    return *std::ranges::find(LOOKS, state, &look::state);
}

constexpr int PORT_WIDTH = 42, PORT_HEIGHT = 40, BAY_MARGIN = 5;

static data port_data(const panel_port &port)
{
    const look &entry = look_of(port.finding->state);
    return object({{"number", std::to_string(port.finding->port.port)},
                   {"word", word_of(port.finding->state)},
                   {"style", entry.style},
                   {"mark", entry.mark},
                   {"sentence", port.finding->sentence},
                   {"x", std::to_string(BAY_MARGIN + port.column * PORT_WIDTH)},
                   {"y", std::to_string(BAY_MARGIN + port.row * PORT_HEIGHT)}});
}

static data block_data(const panel_block &block)
{
    const int width = 2 * BAY_MARGIN + block.columns * PORT_WIDTH, height = 2 * BAY_MARGIN + block.rows * PORT_HEIGHT;
    return object({{"width", std::to_string(width)},
                   {"height", std::to_string(height)},
                   {"inner_width", std::to_string(width - 1)},
                   {"inner_height", std::to_string(height - 1)},
                   {"first", std::to_string(block.ports.front().finding->port.port)},
                   {"last", std::to_string(block.ports.back().finding->port.port)},
                   {"ports", list(block.ports, port_data)}});
}

static data legend(const std::vector<port_finding> &ports)
{
    data entries{data::type::list};
    for (const look &entry : LOOKS)
        if (const auto count = std::ranges::count(ports, entry.state, &port_finding::state); count > 0)
            entries.push_back(object({{"style", entry.style},
                                      {"mark", entry.mark},
                                      {"meaning", entry.meaning},
                                      {"count", std::to_string(count)}}));
    return entries;
}

static data missing_data(const missing_ports &one)
{
    return object({{"step", one.missing.step},
                   {"style", style_of(one.missing.why)},
                   {"word", word_of(one.missing.why)},
                   {"detail", one.missing.detail},
                   {"ports", one.ports}});
}

void add_panel(data &page, const journal::run_record &run)
{
    const std::vector<port_finding> ports = ports_of(run);
    const std::vector<missing_ports> missing = missing_in(ports);
    page.set("has_panel", !ports.empty());
    page.set("port_count", counted(ports.size(), "port"));
    page.set("legend", legend(ports));
    page.set("has_missing", !missing.empty());
    page.set("missing", list(missing, missing_data));
    page.set("groups", list(lay_out(ports), [](const panel_group &group) {
                 return object({{"group", group.name}, {"blocks", list(group.blocks, block_data)}});
             }));
}

} // namespace reports
