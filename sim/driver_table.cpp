/* SPDX-License-Identifier: MIT
 *
 * The driver table of the simulated switch: the slots of all families.
 */
#include "driver_table.h"

#include <algorithm>

#include "driver_slots.h"

namespace sim
{

runner *g_runner;
bool g_announce;

static const std::vector<slot_row> &slots()
{
    static const auto rows = [] {
        std::vector<slot_row> all;
        for (const auto &family : {cpu_slots(), port_slots(), phy_slots(), vlan_slots(), poe_slots()})
            all.insert(all.end(), family.begin(), family.end());
        return all;
    }();
    return rows;
}

const std::vector<std::string_view> &slot_names()
{
    static const auto names = [] {
        std::vector<std::string_view> all;
        for (const auto &row : slots())
            all.push_back(row.name);
        return all;
    }();
    return names;
}

vexa_diag_drv driver_table(const std::vector<std::string> &dropped)
{
    vexa_diag_drv table{};
    for (const auto &row : slots()) {
        if (std::find(dropped.begin(), dropped.end(), row.name) == dropped.end())
            row.fill(table);
    }
    return table;
}

void drive(runner &switch_runner, bool announce)
{
    g_runner = &switch_runner;
    g_announce = announce;
}

} // namespace sim
