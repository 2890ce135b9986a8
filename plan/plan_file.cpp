/* SPDX-License-Identifier: MIT
 *
 * Reads a plan file: the unit, its panel and the labels of a run.
 */
#include <algorithm>
#include <fmt/format.h>
#include <regex>

#include "plan.h"
#include "step_file.h"

namespace plan
{

static constexpr const char *any_text = ".{1,64}";
static constexpr size_t longest_label = 256; /* std::regex takes stack by the character */

bool matches(const label &wanted, const std::string &text)
{
    const bool readable = std::ranges::none_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7f; });
    return readable && text.size() <= longest_label && std::regex_match(text, std::regex(wanted.pattern));
}

bool has_port(const test_plan &plan, uint32_t port)
{
    return std::ranges::any_of(
        plan.panel, [&](const port_group &group) { return std::ranges::find(group.ports, port) != group.ports.end(); });
}

static std::string needed_text(const text::toml_reader &reader, std::string_view key, std::string_view expected)
{
    const auto value = reader.text(key);
    if (!value)
        reader.fail(key, fmt::format("found no key {}, expected {}", key, expected));
    if (value->empty())
        reader.fail(key, fmt::format("{} is \"\", expected {}", key, expected));
    return *value;
}

static void read_label(const text::toml_reader &reader, label &wanted)
{
    wanted.pattern = reader.text("pattern").value_or(wanted.pattern);
    try {
        const std::regex compiled(wanted.pattern);
    } catch (const std::regex_error &) {
        reader.fail("pattern",
                    fmt::format("pattern is \"{}\", expected an ECMAScript regular expression", wanted.pattern));
    }
}

static void read_labels(const std::string &file, const text::toml_reader &reader, test_plan &into)
{
    reader.for_table("serial", [&](const toml::table &table) {
        read_label(text::toml_reader(file, table, {"pattern"}), into.serial);
    });
    reader.for_table("operator", [&](const toml::table &table) {
        const text::toml_reader section(file, table, {"required", "pattern"});
        read_label(section, into.operator_name);
        into.operator_name.required = section.flag("required", true);
    });
    reader.for_table("station", [&](const toml::table &table) {
        const text::toml_reader section(file, table, {"required", "pattern", "default"});
        read_label(section, into.station);
        into.station.required = section.flag("required", false);
        into.station.preset = section.text("default").value_or("");
        if (!into.station.preset.empty() && !matches(into.station, into.station.preset))
            section.fail("default", fmt::format("default is \"{}\", expected a text that matches {}",
                                                into.station.preset, into.station.pattern));
    });
}

static void read_panel(const std::string &file, const toml::table &table, test_plan &into)
{
    const text::toml_reader reader(file, table, {"name", "ports"});
    port_group group{needed_text(reader, "name", "the kind of the ports, as \"RJ45\""), reader.distinct_ports("ports")};
    if (group.ports.empty())
        reader.fail("ports", "found no key ports, expected the numbers of the ports");
    for (const port_group &other : into.panel)
        for (const uint32_t port : group.ports)
            if (std::ranges::find(other.ports, port) != other.ports.end())
                reader.fail("ports", fmt::format("ports names port {}, which is in panel group {}, expected others",
                                                 port, other.name));
    into.panel.push_back(std::move(group));
}

test_plan read_plan(const std::string &path)
{
    const toml::table table = text::read_toml(path, "a plan file");
    const text::toml_reader reader(path, table,
                                   {"name", "version", "product", "panel", "serial", "operator", "station", "step"});
    test_plan into{.file = path,
                   .name = needed_text(reader, "name", "the plan's name"),
                   .version = needed_text(reader, "version", "the plan's version"),
                   .product = needed_text(reader, "product", "the product's name"),
                   .panel = {},
                   .serial = {"--serial", true, "[A-Za-z0-9._-]{1,64}"},
                   .operator_name = {"--operator", true, any_text},
                   .station = {"--station", false, any_text},
                   .steps = {}};
    read_labels(path, reader, into);
    reader.for_each_table("panel", [&](const toml::table &entry) { read_panel(path, entry, into); });
    if (into.panel.empty())
        reader.fail("panel", "the unit has no ports, expected [[panel]] tables");
    reader.for_each_table("step", [&](const toml::table &entry) { read_step(path, entry, into); });
    if (into.steps.empty())
        reader.fail("step", "the plan has no steps, expected [[step]] tables");
    return into;
}

} // namespace plan
