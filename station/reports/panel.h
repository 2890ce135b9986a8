/* SPDX-License-Identifier: MIT
 *
 * Where the ports are on the drawing of the front panel: odd ones above even ones, as on the switch itself, in blocks
 * of twelve. Blocks flow like words, so that a panel of any size fits a screen and a sheet.
 */
#ifndef REPORTS_PANEL_H
#define REPORTS_PANEL_H

#include <string>
#include <vector>

#include "port_state.h"

namespace reports
{

struct panel_port {
    const port_finding *found;
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

/* Groups by their first port; the ports are in the order of their numbers. Points into them. */
std::vector<panel_group> lay_out(const std::vector<port_finding> &ports);

} // namespace reports

#endif
