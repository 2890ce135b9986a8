/* SPDX-License-Identifier: MIT
 *
 * Board files: their bases, abilities, and that the shipped ones are right. boards.txt has what wrong ones are answered
 * with.
 */
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "common/file.h"
#include "sim/board_file/board_file.h"
#include "sim/model/ability.h"

using namespace sim;

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
        boards++;
    }
    EXPECT_GE(boards, 10);
}
