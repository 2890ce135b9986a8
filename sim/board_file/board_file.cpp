/* SPDX-License-Identifier: MIT */
#include "board_file.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include <fmt/format.h>

#include "board_sections.h"
#include "common/toml_reader.h"
#include "common/words.h"
#include "sim/model/ability.h"

namespace sim
{

/* A board file and those that led to it by their base, and where boards are known by name. */
struct chain {
    std::vector<std::string> paths;
    std::string boards_dir;
};

static board_config load(const chain &files);

std::vector<std::string> boards_in(const std::string &folder)
{
    std::vector<std::string> names;
    std::error_code no_folder;
    for (const auto &entry : std::filesystem::directory_iterator(folder, no_folder)) {
        if (entry.path().extension() == ".toml")
            names.push_back(entry.path().stem().string());
    }
    std::ranges::sort(names);
    return names;
}

static std::filesystem::path base_path(const common::toml_reader &reader, const std::string &base, const chain &files)
{
    auto beside = std::filesystem::path(files.paths.back()).parent_path() / base;
    if (std::filesystem::is_regular_file(beside))
        return beside;
    const auto names = boards_in(files.boards_dir);
    if (std::ranges::find(names, base) != names.end())
        return std::filesystem::path(files.boards_dir) / (base + ".toml");
    const std::vector<std::string_view> known(names.begin(), names.end());
    reader.fail("base", fmt::format("base is \"{}\", expected a board file beside this one{}", base,
                                    known.empty() ? "" : " or a board's name" + common::expected_one_of(base, known)));
}

static board_config base_of(const common::toml_reader &reader, const chain &files)
{
    const auto base = reader.text("base");
    if (!base)
        return {};
    const auto path = base_path(reader, *base, files);
    auto longer = files;
    longer.paths.push_back(path.string());
    const auto same = [&](const auto &known) {
        std::error_code no_file;
        return std::filesystem::equivalent(known, path, no_file);
    };
    if (const auto first = std::ranges::find_if(files.paths, same); first != files.paths.end())
        reader.fail("base", fmt::format("base is \"{}\", which makes a circle ({}), expected another board", *base,
                                        fmt::join(longer.paths.begin() + (first - files.paths.begin()),
                                                  longer.paths.end(), ", ")));
    return load(longer);
}

static void read_head(const common::toml_reader &reader, board_config &board)
{
    board.name = reader.text("name").value_or(board.name);
    board.description = reader.text("description").value_or(board.description);
    board.rate_divisor = reader.word("rate_divisor", {1, 1000000}, board.rate_divisor);
    board.min_wire_mbps = reader.word("min_wire_mbps", {1, 10000}, board.min_wire_mbps);
    board.cpu_frame_us = reader.word("cpu_frame_us", {1, 1000000}, board.cpu_frame_us);
    board.boot_ms = reader.word("boot_ms", {0, 3600000}, board.boot_ms);
}

/* The ends of every cable of this file, in order; a plug has the same port at both ends. */
static std::vector<std::pair<uint32_t, uint32_t>> cables_in(const common::toml_reader &reader)
{
    std::vector<std::pair<uint32_t, uint32_t>> cables;
    if (reader.is_text("cables")) {
        const auto neighbours = reader.ports("cables", FACMSG_MAX_PORTS);
        if (neighbours.size() % 2)
            reader.fail("cables", "cables names an odd number of ports, expected pairs of neighbours");
        for (size_t i = 0; i < neighbours.size(); i += 2)
            cables.emplace_back(neighbours[i], neighbours[i + 1]);
    } else {
        reader.for_each_pair("cables", FACMSG_MAX_PORTS, [&](uint32_t a, uint32_t b) { cables.emplace_back(a, b); });
    }
    for (const auto &[a, b] : cables) {
        if (a == b)
            reader.fail("cables",
                        fmt::format("cables joins port {} to itself, expected two different ports, or plugs", a));
    }
    for (const auto number : reader.ports("plugs", FACMSG_MAX_PORTS))
        cables.emplace_back(number, number);
    return cables;
}

/* Whoever cables a port takes the base's cable or plug out of it. */
static void read_cables(const common::toml_reader &reader, board_config &board)
{
    std::set<uint32_t> cabled;
    for (const auto &[a, b] : cables_in(reader)) {
        const std::string_view key = a == b ? "plugs" : "cables";
        for (const auto number : std::set{a, b}) {
            if (!board.ports.count(number) || board.ports.at(number).faces_fpga)
                reader.fail(key, fmt::format("{} names port {}, expected a port of the board", key, number));
            if (!cabled.insert(number).second)
                reader.fail(key, fmt::format("{} names port {}, which is cabled already, expected a port without "
                                             "cable or plug",
                                             key, number));
            std::erase_if(board.cables, [=](auto &known) { return known.first == number || known.second == number; });
        }
        board.cables.emplace_back(a, b);
    }
}

/* The two internal ports behind which the FPGA is. */
static void read_fpga(const std::string &path, const toml::table &table, board_config &board)
{
    const common::toml_reader section(path, table, {"ports", "phy_id_offset"});
    const auto numbers = section.ports("ports", FACMSG_MAX_PORTS);
    if (numbers.size() != 2)
        section.fail("ports", "expected the two ports that face the FPGA, such as \"37,38\"");
    const auto offset = section.word("phy_id_offset", PHY_ID_OFFSETS, DEFAULT_PHY_ID_OFFSET);
    for (const auto number : numbers) {
        port_config facing;
        facing.number = number;
        facing.phy_id = offset + number;
        facing.medium = FACMSG_MEDIUM_FIBER;
        facing.modes[FACMSG_MEDIUM_FIBER] = {SPEED_10G, 2};
        facing.faces_fpga = true;
        add_port(section, facing, board);
    }
}

static board_config read_board(const toml::table &table, const chain &files)
{
    const auto &path = files.paths.back();
    const common::toml_reader reader(path, table,
                                     {"base", "name", "description", "rate_divisor", "min_wire_mbps", "cpu_frame_us",
                                      "boot_ms", "ports", "cables", "plugs", "fpga", "poe", "loads", "faults"});
    auto board = base_of(reader, files);
    read_head(reader, board);
    reader.for_each_table("ports", [&](const auto &entry) { read_ports(path, entry, board); });
    if (board.ports.empty())
        reader.fail("ports", "the board has no ports, expected [[ports]] tables");
    read_cables(reader, board);
    reader.for_table("fpga", [&](const auto &entry) { read_fpga(path, entry, board); });
    reader.for_table("poe", [&](const auto &entry) { read_poe(path, entry, board); });
    reader.for_each_table("loads", [&](const auto &entry) { read_load(path, entry, board); });
    reader.for_each_table("faults", [&](const auto &entry) { read_fault(path, entry, board); });
    return board;
}

static board_config load(const chain &files)
{
    return read_board(common::read_toml(files.paths.back(), "a board file"), files);
}

board_config load_board(const std::string &path, const std::string &boards_dir)
{
    return load({{path}, boards_dir});
}

board_config parse_board(std::string_view text, const std::string &path, const std::string &boards_dir)
{
    return read_board(common::parse_toml(text, path), {{path}, boards_dir});
}

} // namespace sim
