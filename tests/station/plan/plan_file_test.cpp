/* SPDX-License-Identifier: MIT
 *
 * Plan files: what a wrong one is answered with before anything is sent, and that the shipped ones are right.
 */
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "bench.h"

static finished dry_run(const temporary_folder &folder, const std::string &plan)
{
    return run(plan_line(folder.path, plan, {"--dry-run"}));
}

TEST(plan_file, a_wrong_one_is_answered_with_place_and_expectation)
{
    const std::string arrow = "-> ", more = "…";
    const temporary_folder folder;
    std::ifstream file(WRONG_PLANS);
    std::string head;
    int answers = 0;
    for (std::string line; std::getline(file, line);) {
        const size_t end = line.find(arrow);
        const std::string plan = std::regex_replace(line.substr(0, end), std::regex("; | $"), "\n");
        if (line.starts_with("head "))
            head = plan.substr(5) + "\n";
        if (end == line.npos)
            continue;
        finished answer = dry_run(folder, head + plan);
        std::string expected = "facmsg-station: plan: " + folder.path + "/plan.toml:" + line.substr(end + arrow.size());
        if (expected.ends_with(more))
            answer.err.replace(std::min(expected.size() - more.size(), answer.err.size()), std::string::npos,
                               more + "\n");
        EXPECT_EQ(answer, (finished{2, "", expected + "\n"})) << plan;
        answers++;
    }
    EXPECT_GT(answers, 40);
}

TEST(plan_file, shipped_plans_are_right_and_a_dry_run_touches_nothing)
{
    const temporary_folder folder;
    for (const auto &entry : std::filesystem::directory_iterator(PLANS)) {
        const finished end = run({"plan", entry.path(), "--dry-run", "--results", folder.path + "/results"});
        EXPECT_EQ(end.code, 0) << end;
        EXPECT_NE(end.out.find("packet any_speed=true\n"), std::string::npos) << end;
    }
    const std::string output = folder.path + "/bytes";
    std::ofstream(output) << "kept as it is";
    const std::string steps = "{request = 'fpga read', options = {address = 0, length = 4, output = '" + output + "'}}";
    EXPECT_EQ(dry_run(folder, plan_with(steps)).code, 0);
    EXPECT_EQ(std::filesystem::file_size(output), 13u);
    EXPECT_FALSE(std::filesystem::exists(folder.path + "/results"));
    std::istringstream narrow(run_on_terminal({"plan", PLANS "/assisted.toml", "--dry-run"}, "", 40).out);
    for (std::string line; std::getline(narrow, line);)
        EXPECT_LE(line.size(), 41u) << line; /* with its carriage return */
}
