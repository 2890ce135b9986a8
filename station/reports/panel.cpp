/* SPDX-License-Identifier: MIT
 *
 * Where the ports are on the drawing of the front panel.
 */
#include "panel.h"

#include <algorithm>

namespace reports
{

constexpr int most_columns = 6;     /* of a block */
constexpr size_t most_in_a_row = 4; /* groups of up to so many ports are not stacked */

using port_list = std::vector<const port_finding *>;

struct named_ports {
    std::string name;
    port_list ports = {};
};

static std::vector<named_ports> by_group(const std::vector<port_finding> &ports)
{
    std::vector<named_ports> groups;
    for (const port_finding &found : ports) {
        auto known = std::ranges::find(groups, found.port.group, &named_ports::name);
        if (known == groups.end())
            known = groups.insert(known, {found.port.group});
        known->ports.push_back(&found);
    }
    return groups;
}

/* Ports 2n-1 and 2n stand above each other; one whose partner is elsewhere stands alone. */
static std::vector<panel_block> blocks_of(const port_list &ports)
{
    const bool stacked = ports.size() > most_in_a_row;
    std::vector<panel_block> blocks;
    int pair = -1;
    for (const port_finding *found : ports) {
        const int row = stacked && found->port.port % 2 == 0 ? 1 : 0;
        const bool is_partner = row == 1 && pair == found->port.port - 1 && !blocks.empty();
        if (blocks.empty() || (!is_partner && blocks.back().columns == most_columns))
            blocks.push_back({{}, 0, stacked ? 2 : 1});
        blocks.back().columns += is_partner ? 0 : 1;
        blocks.back().ports.push_back({found, blocks.back().columns - 1, row});
        pair = row == 0 ? found->port.port : -1;
    }
    return blocks;
}

std::vector<panel_group> lay_out(const std::vector<port_finding> &ports)
{
    std::vector<panel_group> groups;
    for (const named_ports &group : by_group(ports))
        groups.push_back({group.name.empty() ? "Ports" : group.name, blocks_of(group.ports)});
    return groups;
}

} // namespace reports
