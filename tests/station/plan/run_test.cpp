/* SPDX-License-Identifier: MIT
 *
 * Plans and runs that come to their end: what is answered, recorded and shown.
 */
#include <filesystem>
#include <gtest/gtest.h>

#include "facmsg_protocol.h"
#include "runs.h"
#include "transcripts.h"

TEST(plan_run, transcripts)
{
    play_transcripts(TRANSCRIPTS);
}

TEST(plan_run, shipped_plans_are_right)
{
    for (const auto &entry : std::filesystem::directory_iterator(PLANS)) {
        const finished end = run({"plan", entry.path(), "--dry-run"});
        EXPECT_EQ(end.code, 0) << end;
        EXPECT_NE(end.out.find("packet any_speed=true\n"), std::string::npos) << end;
    }
}

TEST(plan_run, a_port_that_the_unit_does_not_have_is_no_pass)
{
    const fake_service service(reply_of<poe_test_reply>(FACMSG_PORT_POE, [](poe_test_reply &reply) {
        reply.port_count = 1;
        reply.ports[0] = 29;
    }));
    const finished end = run(steps_line(service.folder.path, "{request = 'poe', retries = 3}"));
    EXPECT_EQ(end.code, 3) << end;
    EXPECT_EQ(only_story(service.folder.path), "poe#1 no-verdict ERROR\nERROR NOT_APPLICABLE");
}

TEST(plan_run, serial_numbers_make_safe_folders_and_no_folder_is_used_twice)
{
    const simulated_switch healthy("healthy-28");
    std::string plan = plan_with("{request = 'factory-mode'}");
    plan.replace(plan.find("SW[0-9]{4}"), 10, ".*");
    const std::string longest(64, 'x');
    for (const std::string &serial : {std::string("../../x y"), std::string("../../x y"), longest + "y"})
        EXPECT_EQ(run(plan_line(healthy.folder.path, plan, {"--serial", serial, "--operator", "O"})).code, 0);
    plan.replace(plan.find(".*"), 2, "(a+)+b");
    EXPECT_EQ(run(plan_line(healthy.folder.path, plan, {"--serial", std::string(250, 'a')})).code, 2); /* ends at all */
    const std::vector<std::string> runs = runs_in(healthy.folder.path);
    ASSERT_EQ(runs.size(), 3u);
    for (const std::string &folder : runs) {
        const std::string name = std::filesystem::path(folder).filename();
        EXPECT_TRUE(name.find("Z-_.._.._x_y") != name.npos || name.ends_with("Z-" + longest)) << name;
    }
}

TEST(plan_run, json_is_one_object)
{
    const simulated_switch faulty("faulty-28");
    const std::string steps =
        "{request = 'factory-mode'}, {name = 'round', repeat = 2, step = [{request = 'packet'}]}, "
        "{request = 'vop'}";
    const finished end = run(steps_line(faulty.folder.path, steps, {"--json", "--only", "factory-mode,round"}));
    const auto report = nlohmann::json::parse(end.out);
    EXPECT_EQ(report["verdict"], "FAIL") << end;
    EXPECT_EQ(report["exit_code"], end.code);
    EXPECT_NE(report.value("station", ""), "");
    EXPECT_EQ(report["run_dir"], runs_in(faulty.folder.path).front());
    EXPECT_EQ(report["failures"].size(), 4u) << end;
    EXPECT_NE(end.err.find("step 2 of 3  round.1.packet  FAIL"), end.err.npos) << end;
}
