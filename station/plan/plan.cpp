/* SPDX-License-Identifier: MIT
 *
 * A plan's file, but for its steps, and what is asked of a plan that was read.
 */
#include "plan.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <regex>

#include "common/text.h"
#include "facmsg_protocol.h"
#include "step_file.h"

extern "C" {
#include <sha2.h>
}

namespace plan
{

/* The patterns of plans that give none. */
static constexpr const char *ANY_SERIAL = "[A-Za-z0-9._-]{1,64}";
static constexpr const char *ANY_TEXT = ".{1,64}";
static constexpr size_t LONGEST_LABEL = 256; /* std::regex takes stack by the character */

const char *request_name(const step &task)
{
    switch (task.is) {
    case step_kind::instruction:
        return "instruction";
    case step_kind::question:
        return "manual";
    case step_kind::pause:
        return "pause";
    case step_kind::request:
        break;
    }
    return task.row->name;
}

int64_t expected_s(const step &task)
{
    return task.row != nullptr ? task.row->expected.typical_s : task.pause_s;
}

bool is_by_hand(const step &task)
{
    return task.is == step_kind::instruction || task.is == step_kind::question;
}

/* Takes time that grows with the text and no faster, whatever the pattern: a library's own mode, without references
 * back into the text. */
static std::regex compiled(const std::string &pattern)
{
    return std::regex(pattern, std::regex::ECMAScript | std::regex_constants::__polynomial);
}

bool matches(const label &field, const std::string &text)
{
    const std::regex pattern = compiled(field.pattern);
    const bool readable = common::printable(text) == text && text.find_first_of("\t\n") == std::string::npos;
    return readable && text.size() <= LONGEST_LABEL && std::regex_match(text, pattern);
}

std::string expected_text(const label &field)
{
    if (field.pattern == ANY_SERIAL)
        return "1 to 64 letters, digits, dots, - and _";
    return field.pattern == ANY_TEXT ? "1 to 64 readable characters"
                                     : fmt::format("a text that matches {}", field.pattern);
}

bool has_port(const test_plan &plan, uint32_t port)
{
    return std::ranges::any_of(
        plan.panel, [&](const port_group &group) { return std::ranges::find(group.ports, port) != group.ports.end(); });
}

static std::string needed_text(const common::toml_reader &reader, std::string_view key, std::string_view expected)
{
    const auto value = reader.text(key);
    if (!value)
        reader.fail(key, fmt::format("found no key {}, expected {}", key, expected));
    if (value->empty())
        reader.fail(key, fmt::format("{} is \"\", expected {}", key, expected));
    return *value;
}

static void read_label(const common::toml_reader &reader, label &field)
{
    field.pattern = reader.text("pattern").value_or(field.pattern);
    try {
        matches(field, "");
    } catch (const std::regex_error &) {
        reader.fail("pattern",
                    fmt::format("pattern is \"{}\", expected an ECMAScript regular expression without back-references",
                                field.pattern));
    }
    field.hint = reader.text("hint").value_or("");
}

static void read_station(const common::toml_reader &section, label &field)
{
    read_label(section, field);
    field.required = section.flag("required", false);
    field.preset = section.text("default").value_or("");
    if (!field.preset.empty() && !matches(field, field.preset))
        section.fail("default", fmt::format("default is \"{}\", expected {}", field.preset, expected_text(field)));
}

static void read_labels(const std::string &file, const common::toml_reader &reader, test_plan &into)
{
    reader.for_table("serial", [&](const toml::table &table) {
        read_label(common::toml_reader(file, table, {"pattern", "hint"}), into.serial);
    });
    reader.for_table("operator", [&](const toml::table &table) {
        const common::toml_reader section(file, table, {"required", "pattern", "hint"});
        read_label(section, into.operator_name);
        into.operator_name.required = section.flag("required", true);
    });
    reader.for_table("station", [&](const toml::table &table) {
        read_station(common::toml_reader(file, table, {"required", "pattern", "default", "hint"}), into.station);
    });
}

static void read_panel(const std::string &file, const toml::table &table, test_plan &into)
{
    const common::toml_reader reader(file, table, {"name", "ports"});
    port_group group{needed_text(reader, "name", "the kind of the ports, as \"RJ45\""),
                     reader.distinct_ports("ports", FACMSG_MAX_PORTS)};
    if (group.ports.empty())
        reader.fail("ports", "found no key ports, expected the numbers of the ports");
    for (const port_group &other : into.panel)
        for (const uint32_t port : group.ports)
            if (std::ranges::find(other.ports, port) != other.ports.end())
                reader.fail("ports", fmt::format("ports names port {}, which is in panel group {}, expected others",
                                                 port, other.name));
    into.panel.push_back(std::move(group));
}

/* SHA-256 in small hexadecimal letters. */
static std::string sha256_of(std::string_view bytes)
{
    SHA2_CTX state;
    std::array<uint8_t, SHA256_DIGEST_LENGTH> digest;
    SHA256Init(&state);
    SHA256Update(&state, reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    SHA256Final(digest.data(), &state);
    return fmt::format("{:02x}", fmt::join(digest, ""));
}

test_plan read_plan(const std::string &path)
{
    const std::string bytes = common::read_bytes(path, "a plan file");
    const toml::table table = common::parse_toml(bytes, path);
    const common::toml_reader reader(path, table,
                                     {"name", "version", "product", "panel", "serial", "operator", "station", "step"});
    test_plan into{.file = path,
                   .sha256 = sha256_of(bytes),
                   .name = needed_text(reader, "name", "the plan's name"),
                   .version = needed_text(reader, "version", "the plan's version"),
                   .product = needed_text(reader, "product", "the product's name"),
                   .panel = {},
                   .serial = {"serial number", "--serial", true, ANY_SERIAL},
                   .operator_name = {"operator", "--operator", true, ANY_TEXT},
                   .station = {"station", "--station", false, ANY_TEXT},
                   .steps = {}};
    read_labels(path, reader, into);
    reader.for_each_table("panel", [&](const toml::table &entry) { read_panel(path, entry, into); });
    if (into.panel.empty())
        reader.fail("panel", "the unit has no ports, expected [[panel]] tables");
    reader.for_each_table("step", [&](const toml::table &entry) { read_step(path, entry, "", into); });
    if (into.steps.empty())
        reader.fail("step", "the plan has no steps, expected [[step]] tables");
    return into;
}

} // namespace plan
