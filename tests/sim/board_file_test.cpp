/* SPDX-License-Identifier: MIT
 *
 * Board files: what a wrong one is answered with, and that the shipped ones are right.
 */
#include <cstring>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "common/toml_reader.h"
#include "sim/board_file/board_file.h"
#include "sim/model/ability.h"

using namespace sim;

static std::string error_of(const std::string &text)
{
    try {
        parse_board(text, "b.toml");
    } catch (const common::file_error &error) {
        return error.what();
    }
    return "no error";
}

struct wrong_board {
    const char *text;
    const char *expected; /* the beginning of the message */
};

TEST(board_file, answers_a_wrong_file_with_place_and_expectation)
{
    const std::string one_port = "\n[[ports]]\nports = 1\ncopper_speeds = [\"1G\"]\n";
    const wrong_board cases[] = {
        {"", "b.toml:1:1: the board has no ports, expected [[ports]] tables"},
        {"name = ", "b.toml:1:8: "},
        {"bot_ms = 1", "b.toml:1:10: unknown key bot_ms, did you mean boot_ms?"},
        {"xyzzyplugh = 1", "b.toml:1:14: unknown key xyzzyplugh, expected one of base, "},
        {"name = 7", "b.toml:1:8: name is 7, expected a string"},
        {"rate_divisor = \"x\"", "b.toml:1:16: rate_divisor is \"x\", expected a whole number from 1 to 1000000"},
        {"rate_divisor = 0", "b.toml:1:16: rate_divisor is 0, expected a whole number from 1 to 1000000"},
        {"base = \"none.toml\"", "b.toml:1:8: base is \"none.toml\", expected a board file beside this one"},
        {"ports = 7", "b.toml:1:9: ports is 7, expected [[ports]] tables"},
        {"[[ports]]\ncopper_speeds = [\"1G\"]", "b.toml:1:1: found no key ports, expected the numbers"},
        {"[[ports]]\nports = \"4-1\"\ncopper_speeds = [\"1G\"]",
         "b.toml:2:9: ports is \"4-1\", expected ports between"},
        {"[[ports]]\nports = 257\ncopper_speeds = [\"1G\"]",
         "b.toml:2:9: found 257, expected a port between 1 and 256"},
        {"[[ports]]\nports = \"1,1\"\ncopper_speeds = [\"1G\"]", "b.toml:2:9: port 1 is described twice"},
        {"[[ports]]\nports = 1", "b.toml:2:9: the ports have no speed, expected"},
        {"[[ports]]\nports = 1\ncopper_speeds = [\"2G\"]", "b.toml:3:18: copper_speeds is \"2G\", did you mean "},
        {"[[ports]]\nports = 1\ncopper_ability = 0x20\nflags = [\"poe\"]",
         "b.toml:4:9: found flags beside an ability word, expected one or the other"},
        {"[[ports]]\nports = 1\nfiber_speeds = [\"1G\"]\nflags = [\"poe\"]",
         "b.toml:4:9: flag poe is on ports without "},
        {"[[ports]]\nports = 1\ncopper_speeds = [\"1G\"]\nspeed = \"10M\"", "b.toml:4:9: the ports cannot run 10M "},
        {"[[ports]]\nports = 1\ncopper_speeds = [\"1G\"]\nmedium = \"fiber\"",
         "b.toml:4:10: the ports have no speed on"},
        {"[[ports]]\nports = 1\ncopper_speeds = [\"1G\"]\n[[ports]]\nports = 2\ncopper_speeds = "
         "[\"1G\"]\nphy_id_offset = 255",
         "b.toml:7:17: port 2 gets phy id 257, which port 1 has, expected another"},
    };
    for (const auto &wrong : cases)
        EXPECT_EQ(error_of(wrong.text).substr(0, strlen(wrong.expected)), wrong.expected) << wrong.text;

    const wrong_board in_front_of_a_port[] = {
        {"cables = [[1, 2]]", "b.toml:1:10: cables names port 2, expected a port of the board"},
        {"cables = [1]", "b.toml:1:11: cables holds 1, expected pairs of ports"},
        {"poe = 3", "b.toml:1:7: poe is 3, expected a [poe] table"},
        {"loads = [{ports = 1, class = 3, draw_mw = 9}]", "b.toml:1:19: ports names port 1, expected a port with PoE"},
        {"loads = [{ports = 1, class = 9, draw_mw = 9}]",
         "b.toml:1:30: class is 9, expected a whole number from 0 to 8"},
        {"loads = [{ports = 1, class = 3}]", "b.toml:1:10: found no key draw_mw, expected ports, class and draw_mw"},
        {"plugs = \"1,1\"", "b.toml:1:9: plugs names port 1, which is cabled already"},
        {"cables = [[1, 1]]", "b.toml:1:10: cables joins port 1 to itself, expected two different ports, or plugs"},
        {"boot_ms = 2.5", "b.toml:1:11: boot_ms is 2.5, expected a whole number"},
        {"boot_ms = 2024-01-31", "b.toml:1:11: boot_ms is 2024-01-31, expected a whole number"},
        {"cables = \"1\"", "b.toml:1:10: cables names an odd number of ports, expected pairs of neighbours"},
    };
    for (const auto &wrong : in_front_of_a_port)
        EXPECT_EQ(error_of(wrong.text + one_port).substr(0, strlen(wrong.expected)), wrong.expected) << wrong.text;

    const wrong_board faults[] = {
        {"ports = 1", "b.toml:5:1: found no key kind, expected one of failing_call, dead_link"},
        {"kind = \"dead_lnik\"", "b.toml:6:8: kind is \"dead_lnik\", did you mean dead_link?"},
        {"kind = \"dead_link\"\nports = 2", "b.toml:7:9: ports names port 2, expected a port of the board"},
        {"kind = \"frame_loss\"\nports = 1", "b.toml:5:1: found no key every, expected a whole number from 1"},
        {"kind = \"dead_link\"\nports = 1\nevery = 2", "b.toml:8:9: unknown key every, expected one of kind, ports"},
        {"kind = \"failing_call\"\nslot = \"set_statu\"",
         "b.toml:7:8: slot is \"set_statu\", did you mean set_status?"},
        {"kind = \"failing_call\"\nslot = \"set_status\"\nresult = 0", "b.toml:8:10: result is 0, which is success"},
    };
    for (const auto &wrong : faults)
        EXPECT_EQ(error_of(one_port + "[[faults]]\n" + wrong.text).substr(0, strlen(wrong.expected)), wrong.expected)
            << wrong.text;
}

TEST(board_file, names_the_base_that_is_wrong)
{
    const auto folder = std::filesystem::path(testing::TempDir());
    std::ofstream(folder / "sim_wrong_base.toml") << "boot_ms = -1\n";
    std::ofstream(folder / "sim_loop.toml") << "base = \"sim_loop.toml\"\n";
    const auto error_from = [&](const std::string &base) -> std::string {
        try {
            parse_board("base = \"" + base + "\"", (folder / "top.toml").string(), SHIPPED_BOARDS);
        } catch (const common::file_error &error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_EQ(error_from("sim_wrong_base.toml"), (folder / "sim_wrong_base.toml").string() +
                                                     ":1:11: boot_ms is -1, expected a whole number from 0 to 3600000");
    EXPECT_NE(error_from("sim_loop.toml").find("makes a circle (" + (folder / "sim_loop.toml").string() + ", "),
              std::string::npos);
    EXPECT_NE(error_from("healty-28")
                  .find("base is \"healty-28\", expected a board file beside this one or a board's "
                        "name, did you mean healthy-28?"),
              std::string::npos);
    EXPECT_EQ(error_from("healthy-28"), "no error"); /* a shipped board, by its name */
    EXPECT_NE(error_from("..").find("base is \"..\""), std::string::npos);
}

TEST(board_file, reads_abilities_in_both_forms)
{
    const auto board = parse_board("[[ports]]\nports = 1\ncopper_speeds = [\"10M\", \"1G\"]\nduplexes = [\"full\"]\n"
                                   "fiber_speeds = [\"10G\"]\nflags = [\"medium_switch\", \"poe\", \"any_speed\"]\n"
                                   "[[ports]]\nports = 2\nfiber_ability = 0x300000a0\n",
                                   "b.toml");
    EXPECT_EQ(board.ports.at(1).ability.copper, 0x2c000022u);
    EXPECT_EQ(board.ports.at(1).ability.fiber, 0x28000080u);
    EXPECT_EQ(board.ports.at(2).ability.fiber, 0x300000a0u);
    EXPECT_EQ(board.ports.at(2).modes[FACMSG_MEDIUM_FIBER], (port_mode{4, 2}));
}

TEST(board_file, tells_5g_from_high_power)
{
    EXPECT_FALSE(ability_allows(FACMSG_ABILITY_HPOE, 13, 2));
    EXPECT_TRUE(ability_allows(ability_bit(13, 2), 13, 2));
    EXPECT_FALSE(ability_allows(ability_bit(13, 2), 14, 1));
}

TEST(board_file, loads_every_shipped_board)
{
    int boards = 0;
    for (const auto &entry : std::filesystem::directory_iterator(SHIPPED_BOARDS)) {
        const auto board = load_board(entry.path().string());
        EXPECT_EQ(board.name, entry.path().stem());
        EXPECT_FALSE(board.ports.empty()) << entry.path();
        ++boards;
    }
    EXPECT_GE(boards, 10);
}
