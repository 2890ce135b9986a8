/* SPDX-License-Identifier: MIT
 *
 * Board files on each other, and the shipped ones. boards.txt has what wrong ones are answered with.
 */
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "common/file.h"
#include "sim/board_file/board_file.h"

using namespace sim;

static std::string error_from(const std::filesystem::path &file)
{
    try {
        load_board(file);
    } catch (const common::file_error &error) {
        return error.what();
    }
    return "no error";
}

TEST(board_file, names_the_base_that_is_wrong)
{
    const auto wrong = std::filesystem::path(testing::TempDir()) / "sim_wrong.toml";
    const auto top = std::filesystem::path(testing::TempDir()) / "sim_top.toml";
    std::ofstream(wrong) << "boot_ms = -1\n";
    std::ofstream(top) << "base = \"sim_wrong.toml\"\n";
    EXPECT_EQ(error_from(top), wrong.string() + ":1:11: boot_ms is -1, expected a whole number from 0 to 3600000");
    std::ofstream(wrong) << "base = \"sim_top.toml\"\n";
    EXPECT_NE(error_from(top).find("makes a circle (" + top.string() + ", " + wrong.string() + ", "),
              std::string::npos);
}

TEST(board_file, loads_every_shipped_board)
{
    EXPECT_GE(boards_in(SHIPPED_BOARDS).size(), 30u);
    for (const auto &name : boards_in(SHIPPED_BOARDS))
        EXPECT_EQ(load_board(SHIPPED_BOARDS "/" + name + ".toml").name, name);
}
