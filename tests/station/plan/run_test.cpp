/* SPDX-License-Identifier: MIT
 *
 * Runs of plans that come to their end: what the journal says, step by step, and the exit code.
 */
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <signal.h>
#include <unistd.h>

#include "bench.h"
#include "facmsg_protocol.h"
#include "transcripts.h"

/* Runs steps on a board with faults: the exit code, and the beginning of the journal's story. */
static void expect_run(const std::string &steps, int code, const std::string &story, const words &options = {},
                       const std::string &faults = "")
{
    const temporary_folder folder;
    const std::string file = folder.path + "/board.toml";
    std::ofstream(file) << "base = '" BOARDS "/healthy-28.toml'\nname = 'changed'\nfaults = [" << faults << "]\n";
    const simulated_switch board(file);
    const finished end = run(steps_line(board.folder.path, steps, options));
    EXPECT_EQ(only_story(board.folder.path).substr(0, story.size()), story) << steps << end;
    EXPECT_EQ(end.code, code) << steps << end;
}

static const std::string FAILS = " step-fail:unit COMPLETE\nCOMPLETE FAIL", PASSES = " COMPLETE\nCOMPLETE PASS",
                         NO_VERDICT = "ERROR NOT_APPLICABLE", NOT_WHOLE = "SKIP NOT_APPLICABLE",
                         UNJUDGED = " step-unknown:unit COMPLETE\nSKIP NOT_APPLICABLE";

TEST(plan_run, limits_add_to_the_verdict)
{
    const std::string read = "{request = 'fpga read', options = {address = 0, length = 4}";
    expect_run(read + ", limits = {data_hex = {equal = '01020304'}}}", 1,
               "fpga-read#1 data_hex_limit-fail:unit" + FAILS);
    expect_run(read + ", limits = {data_hex = {equal = '00000000'}}}", 0, "fpga-read#1" + PASSES);
    expect_run(read + "}", 5, "fpga-read#1" + UNJUDGED);
    expect_run("{request = 'vop', limits = {vop_status = {equal = 0}, vop_value = {max = 53000}}}", 1,
               "vop#1 vop_value-fail:port01");
    expect_run("{request = 'poe', options = {classes = '1'}, limits = {pd_class = {equal = 1}}}", 1,
               "poe#1 class-fail:port09 class-fail:port10 class-fail:port11 class-fail:port12 class-fail:port13 "
               "class-fail:port14 class-fail:port15 class-fail:port16 pd_class_limit-not-tested:port09");
    /* the station's own limit, no error at all, judges only what the plan does not, and one count fails once */
    const std::string errors = "{request = 'broadcast', limits = {fcs_errors = ";
    const std::string damaged = "{kind = 'fcs_errors', every = 1, ports = 15}";
    expect_run(errors + "{max = 1e9}}}", 0, "broadcast#1" + PASSES, {}, damaged);
    expect_run(errors + "{max = 0.5}}}", 1, "broadcast#1 fcs_errors-fail:port15" + FAILS, {}, damaged);
    expect_run(errors + "{equal = 0}}}", 1, "broadcast#1 fcs_errors_limit-fail:port15" + FAILS, {}, damaged);
}

TEST(plan_run, all_ports_that_are_covered_and_no_others_are_judged)
{
    const std::string one_too_many = "{request = 'poe', covers = '9-17'}, {request = 'factory-mode'}";
    const std::string fails = "poe#1 coverage-fail:port17 step-fail:unit COMPLETE\nfactory-mode#1";
    expect_run(one_too_many, 1, fails + " COMPLETE\nCOMPLETE FAIL");
    expect_run(one_too_many, 1, fails + " step poe failed, and the run stops there SKIP\nCOMPLETE FAIL",
               {"--stop-on-fail"});
    expect_run("{request = 'poe', covers = '9-15'}", 1, "poe#1 coverage-fail:port16" + FAILS);
    expect_run("{request = 'prbs', options = {ports = '25-27'}, covers = '25-27'}", 1,
               "prbs#1 status-unknown:? status-unknown:? status-unknown:? status-unknown:? coverage-fail:unit" + FAILS);
}

TEST(plan_run, a_part_is_no_whole)
{
    const std::string left_out = " the run was told to leave the step out SKIP\n";
    expect_run("{request = 'poe-version'}", 0, "poe-version#1" + PASSES, {"--only", "poe-version"});
    expect_run("{name = 'round', repeat = 2, step = [{request = 'poe-version'}]}, {request = 'factory-mode'}", 6,
               "factory-mode#1 COMPLETE\nround.1.poe-version#1" + left_out + "round.2.poe-version#1" + left_out +
                   NOT_WHOLE,
               {"--skip", "round"});
    expect_run("{request = 'switch-speed'}, {request = 'fc-report'}, {request = 'poe-version'}", 3,
               "fc-report#1 no-verdict ERROR\npoe-version#1 COMPLETE\nswitch-speed#1" + left_out + NO_VERDICT,
               {"--only", "fc-report,poe-version"});
    expect_run("{request = 'fc-report', stop_on_fail = true}, {request = 'factory-mode'}", 3,
               "fc-report#1 no-verdict ERROR\n"
               "factory-mode#1 step fc-report had no verdict, and the run stops there SKIP\n" +
                   NO_VERDICT);
}

TEST(plan_run, a_failure_is_tried_again_and_then_concludes_nothing)
{
    const std::string unreadable = "{kind = 'failing_call', ports = 20, slot = 'get_port_fcs'";
    const std::string retried = " fcs_errors-fail-retried:port20 step-fail-retried:unit COMPLETE\n";
    expect_run("{request = 'broadcast', retries = 2}", 0, "broadcast#1" + retried + "broadcast#2" + PASSES, {},
               unreadable + ", calls = 1}");
    expect_run("{request = 'broadcast', retries = 2}", 1,
               "broadcast#1" + retried + "broadcast#2" + retried + "broadcast#3 fcs_errors-fail:port20" + FAILS, {},
               unreadable + "}");
    /* what nothing judges the second time is no pass */
    expect_run("{request = 'prbs', retries = 1}", 5,
               "prbs#1 status-not-tested:? status-not-tested:? status-not-tested:? status-not-tested:? "
               "step-fail-retried:unit COMPLETE\n"
               "prbs#2 status-unknown:? status-unknown:? status-unknown:? status-unknown:?" +
                   UNJUDGED,
               {}, "{kind = 'failing_call', ports = 25, slot = 'port_phy_loopback', calls = 1}");
}

/* A plan whose steps stand in the command line. */
static finished run_line(const simulated_switch &board, const words &line)
{
    const auto options = std::ranges::find_if(line, [](const std::string &word) { return word.starts_with("--"); });
    std::string steps;
    for (auto word = line.begin() + 1; word != options; ++word)
        steps += *word + " ";
    finished end = run(steps_line(board.folder.path, steps, {options, line.end()}));
    const std::string console = end.out.substr(0, end.out.find("\n\n  ")); /* the banner follows */
    end.out = std::regex_replace(console, std::regex("[0-9]\\.[0-9] s"), "0.1 s");
    return end;
}

TEST(plan_run, console_transcripts)
{
    play_transcripts(CONSOLE_TRANSCRIPTS, run_line);
}

/* Its number must not go to the journal, which would then hold what was meant for people. */
TEST(plan_run, a_closed_output_leaves_the_journal_alone)
{
    const simulated_switch healthy("healthy-28");
    words line{"/bin/sh", "-c", "exec \"$@\" >&-", "sh"};
    const words program = station(steps_line(healthy.folder.path, "{request = 'factory-mode'}"));
    line.insert(line.end(), program.begin(), program.end());
    EXPECT_EQ(wait_for(start(line, STDOUT_FILENO, STDERR_FILENO)), 3);
    EXPECT_EQ(only_story(healthy.folder.path), "factory-mode#1 COMPLETE\nCOMPLETE PASS");
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
    const finished listing = run(steps_line(faulty.folder.path, steps, {"--json", "--dry-run", "--only", "round"}));
    const auto names = nlohmann::json::parse(listing.out)["steps"];
    ASSERT_EQ(names.size(), 2u) << listing;
    EXPECT_EQ(names[1]["name"], "round.2.packet");
    const finished end = run(steps_line(faulty.folder.path, steps, {"--json", "--only", "factory-mode,round"}));
    const auto report = nlohmann::json::parse(end.out);
    EXPECT_EQ(report["verdict"], "FAIL") << end;
    EXPECT_EQ(report["exit_code"], end.code);
    EXPECT_EQ(report["run_dir"], runs_in(faulty.folder.path).front());
    EXPECT_EQ(report["failures"].size(), 4u) << end;
    EXPECT_NE(end.err.find("step 2 of 3  round.1.packet  FAIL"), end.err.npos) << end;
}

TEST(plan_usage, options_are_checked_before_anything_is_sent)
{
    const temporary_folder folder;
    const std::string plan = plan_with("{request = 'poe'}, {name = 'round', repeat = 2, step = [{request = 'vop'}]}");
    const std::pair<words, finished> cases[] = {
        {{"--only", "peo"}, {2, "", "--only: unknown step 'peo', did you mean poe?"}},
        {{"--only", "xyz"}, {2, "", "--only: unknown step 'xyz', expected one of poe, round"}},
        {{"--skip", "round,"}, {2, "", "--serial: needed when nobody can be asked, a text that matches SW[0-9]{4}"}},
        {{"--skip", "round,poe"}, {5, "", "nothing was run: --only and --skip leave no step"}},
        {{"--serial", "SW00012", "--no-input"},
         {2, "", "--serial: found 'SW00012', allowed: a text that matches SW[0-9]{4}"}},
        {{"--serial", "SW0001"}, {2, "", "--operator: needed when nobody can be asked, 1 to 64 readable characters"}},
        {{"--serial", "SW0001", "--operator", "J\xff"},
         {2, "",
          "--operator: found 'J\xEF\xBF\xBD', which is no readable UTF-8, allowed: 1 to 64 readable characters"}},
        {{"--grace", "x"}, {2, "", "--grace: found 'x', allowed: 0 to 3600"}},
        {{"--results", "/dev/null"},
         {2, "", "--results: '/dev/null' is no directory, allowed: a directory, or where one can be made"}},
    };
    for (const auto &[options, expected] : cases)
        EXPECT_EQ(run(plan_line(folder.path, plan, options)),
                  (finished{expected.code, "", "facmsg-station: plan: " + expected.err + "\n"}));
    std::string greedy = plan;
    greedy.replace(greedy.find("SW[0-9]{4}"), 10, "(a+)+b");
    EXPECT_EQ(run(plan_line(folder.path, greedy, {"--serial", std::string(250, 'a')})).code, 2); /* ends at all */
    EXPECT_TRUE(runs_in(folder.path).empty());
}
