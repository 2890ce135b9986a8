/* SPDX-License-Identifier: MIT
 *
 * The front panel on the page: a port's colour says what is known of it, and a list what is missing.
 */
#include <algorithm>

#include "findings.h"
#include "page_data.h"
#include "panel.h"

namespace reports
{

/* How a port looks: its colour in the template, and its mark, for which there is room for five letters. */
struct look {
    port_state state;
    const char *style, *mark, *meaning;
};
constexpr look looks[] = {
    {port_state::failed, "fail", "FAIL", "failed"},
    {port_state::retried, "warn", "RETRY", "failed at first"},
    {port_state::passed_so_far, "part", "PART", "passed so far, something is missing"},
    {port_state::passed, "pass", "PASS", "passed all that the plan asks"},
    {port_state::unknown, "none", "–", "nothing known"},
};

static const look &look_of(port_state state)
{
    return *std::ranges::find(looks, state, &look::state);
}

constexpr int port_width = 42, port_height = 40, bay_margin = 5;

static data port_data(const panel_port &port)
{
    const look &shown = look_of(port.found->state);
    return object({{"number", std::to_string(port.found->port.port)},
                   {"word", word_of(port.found->state)},
                   {"style", shown.style},
                   {"mark", shown.mark},
                   {"sentence", port.found->sentence},
                   {"x", std::to_string(bay_margin + port.column * port_width)},
                   {"y", std::to_string(bay_margin + port.row * port_height)}});
}

static data block_data(const panel_block &block)
{
    const int width = 2 * bay_margin + block.columns * port_width, height = 2 * bay_margin + block.rows * port_height;
    return object({{"width", std::to_string(width)},
                   {"height", std::to_string(height)},
                   {"inner_width", std::to_string(width - 1)},
                   {"inner_height", std::to_string(height - 1)},
                   {"first", std::to_string(block.ports.front().found->port.port)},
                   {"last", std::to_string(block.ports.back().found->port.port)},
                   {"ports", list(block.ports, port_data)}});
}

static data legend(const std::vector<port_finding> &ports)
{
    data entries{data::type::list};
    for (const look &shown : looks)
        if (const auto count = std::ranges::count(ports, shown.state, &port_finding::state); count > 0)
            entries.push_back(object({{"style", shown.style},
                                      {"mark", shown.mark},
                                      {"meaning", shown.meaning},
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
