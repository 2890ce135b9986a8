/* SPDX-License-Identifier: MIT
 *
 * Plan files: what a wrong one is answered with before anything is sent, and that the shipped ones are right.
 */
#include <filesystem>
#include <gtest/gtest.h>

#include "bench.h"

struct wrong_plan {
    const char *text;
    const char *expected; /* after the file's name */
};

static void expect_errors(std::span<const wrong_plan> cases, const std::string &head)
{
    const temporary_folder folder;
    for (const wrong_plan &wrong : cases)
        EXPECT_EQ(run(plan_line(folder.path, head + wrong.text, {"--dry-run"})),
                  (finished{2, "", "facmsg-station: plan: " + folder.path + "/plan.toml:" + wrong.expected + "\n"}))
            << wrong.text;
    EXPECT_TRUE(runs_in(folder.path).empty());
}

TEST(plan_file, a_wrong_head_is_answered_with_place_and_expectation)
{
    const wrong_plan cases[] = {
        {"", "1:1: found no key name, expected the plan's name"},
        {"\n", "1:1: found no key name, expected the plan's name"},
        {"name = 7", "1:8: name is 7, expected a string"},
        {"naem = \"a\"", "1:8: unknown key naem, did you mean name?"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"", "1:1: the unit has no ports, expected [[panel]] tables"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"\n[[panel]]\nname = \"x\"\nports = 1",
         "1:1: the plan has no steps, expected [[step]] tables"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"\n[[panel]]\nname = \"x\"\nports = 1\n[[panel]]\nname = \"y\"\n"
         "ports = \"1-2\"",
         "9:9: ports names port 1, which is in panel group x, expected others"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"\n[[panel]]\nname = \"x\"\nports = \"1-3,3\"",
         "6:9: ports names port 3 twice, expected each port once"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"\n[serial]\npattern = \"[\"",
         "5:11: pattern is \"[\", expected an ECMAScript regular expression without back-references"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"\n[station]\npattern = \"[0-9]\"\ndefault = \"x\"",
         "6:11: default is \"x\", expected a text that matches [0-9]"},
        {"name = \"a\"\nversion = \"1\"\nproduct = \"p\"\n[operator]\nrequired = \"yes\"",
         "5:12: required is \"yes\", expected true or false"},
    };
    expect_errors(cases, "");
}

TEST(plan_file, a_wrong_step_is_answered_with_place_and_expectation)
{
    const wrong_plan cases[] = {
        {"[[step]]", "1:1: found none, expected one key of request, instruct, ask, pause_s, repeat"},
        {"[[step]]\nreqest = \"poe\"", "2:10: unknown key reqest, did you mean request?"},
        {"[[step]]\nrequest = \"poe\"\nask = \"?\"",
         "3:7: found request, ask, expected one key of request, instruct, ask, pause_s, repeat"},
        {"[[step]]\nask = \"Green?\"", "1:1: found no key name, expected a name for the step"},
        {"[[step]]\nname = \"a\"\ninstruct = \" \"", "3:12: instruct is \" \", expected a text for the operator"},
        {"[[step]]\nname = \"a\"\nask = \"V\"\nlimits = { vlaue = { min = 1 } }",
         "4:20: unknown value vlaue of manual, did you mean value?"},
        {"[[step]]\nname = \"a\"\npause_s = 0", "3:11: pause_s is 0, expected a whole number from 1 to 86400"},
        {"[[step]]\nname = \"a\"\nrepeat = 101\n", "3:10: repeat is 101, expected a whole number from 1 to 100"},
        {"[[step]]\nname = \"a\"\nrepeat = 2", "1:1: the group has no steps, expected [[step.step]] tables"},
        {"[[step]]\nname = \"a\"\nrepeat = 2\n[[step.step]]\nrequest = \"poe\"\n[[step.step]]\nname = \"b\"\nrepeat = "
         "2",
         "8:10: found a group in a group, expected a request, an instruction, a question or a pause"},
        {"[[step]]\nname = \"a\"\nrepeat = 2\n[[step.step]]\nrequest = \"poe\"\n[[step]]\nname = \"a\"\nrequest = "
         "\"poe\"",
         "7:8: name is \"a\", which an earlier step has, expected another name"},
        {"[[step]]\nrequest = \"pakcet\"", "2:11: request is \"pakcet\", did you mean packet?"},
        {"[[step]]\nrequest = \"poe\"\n[[step]]\nrequest = \"poe\"",
         "3:1: name is \"poe\", which an earlier step has, expected another name"},
        {"[[step]]\nrequest = \"poe\"\nname = \"P\"", "3:8: name is \"P\", expected letters a to z, digits, - and _"},
        {"[[step]]\nrequest = \"poe\"\nretries = 10", "3:11: retries is 10, expected a whole number from 0 to 9"},
        {"[[step]]\nrequest = \"packet\"\noptions = { spede = 1 }", "3:21: unknown key spede, did you mean speed?"},
        {"[[step]]\nrequest = \"packet\"\noptions = { speed = \"7G\" }",
         "3:21: --speed: found '7G', allowed: 10M, 100M, 1G, 2.5G, 5G, 10G or 0 to 255"},
        {"[[step]]\nrequest = \"packet\"\noptions = { any_speed = 1 }", "3:25: any_speed is 1, expected true or false"},
        {"[[step]]\nrequest = \"poe\"\noptions = { unit = 1.5 }", "3:20: unit is 1.5, expected a number or a text"},
        {"[[step]]\nrequest = \"log-level\"",
         "1:1: LEVEL: expected exactly one value, allowed: -2147483648 to 2147483647"},
        {"[[step]]\nrequest = \"fpga read\"\noptions = { address = 0xfffffffc, length = 8 }",
         "3:11: ADDRESS: found '0xfffffffc', allowed: up to 0xfffffff8 for 8 bytes"},
        {"[[step]]\nrequest = \"fpga write\"\noptions = { address = 0, hex = 12 }", "3:32: hex is 12, expected a text"},
        {"[[step]]\nrequest = \"broadcast\"\nlimits = { fcs_error = { max = 4 } }",
         "3:24: unknown value fcs_error of broadcast, did you mean fcs_errors?"},
        {"[[step]]\nrequest = \"broadcast\"\nlimits = { fcs_errors = 4 }",
         "3:25: fcs_errors is 4, expected limits such as { min = 1, max = 5 }"},
        {"[[step]]\nrequest = \"broadcast\"\nlimits = { fcs_errors = {} }",
         "3:25: fcs_errors has no limit, expected min, max or equal"},
        {"[[step]]\nrequest = \"broadcast\"\nlimits = { fcs_errors = { max = nan } }",
         "3:33: max is nan, expected a number"},
        {"[[step]]\nrequest = \"broadcast\"\nlimits = { fcs_errors = { most = 4 } }",
         "3:34: unknown key most, expected one of min, max, equal, unit"},
        {"[[step]]\nrequest = \"vop\"\nlimits = { vop_value = { equal = \"x\" } }",
         "3:24: vop_value is a number, expected numbers"},
        {"[[step]]\nrequest = \"fpga read\"\noptions = { address = 0, length = 4 }\nlimits = { data_hex = { max = 4 } "
         "}",
         "4:23: data_hex is a text, expected equal = \"…\""},
        {"[[step]]\nrequest = \"poe\"\ncovers = \"1-29\"", "3:10: covers names port 29, expected ports of the panel"},
        {"[[step]]\nrequest = \"flow\"\ncovers = 1",
         "3:10: found covers without options.ports, expected both: the reply lists ports by position"},
        {"[[step]]\nrequest = \"flow\"\noptions = { ports = \"1-28\" }\ncovers = \"1-2\"",
         "4:10: covers and options.ports differ, expected the same ports in both"},
        {"[[step]]\nrequest = \"flow\"\noptions = { ports = \"1-29\" }",
         "3:11: options names port 29, expected ports of the panel"},
        {"[[step]]\nrequest = \"factory-mode\"\ncovers = 1",
         "3:10: found covers, expected none: factory-mode judges no ports"},
        {"[[step]]\nrequest = \"vop\"\nlimits = { vop_value = { min = 5, max = 4 } }",
         "3:41: max is below min, expected no less"},
        {"[[step]]\nrequest = \"fpga write\"\noptions = { address = 0, file = \"-\" }",
         "3:33: file is \"-\", expected a file: a plan reads nothing from the input"},
        {"[[step]]\nrequest = \"poe\"\ntimeout_s = 0", "3:13: timeout_s is 0, expected a whole number from 1 to 86400"},
    };
    const std::string head =
        "name = \"a\"\nversion = \"1\"\nproduct = \"p\"\npanel = [{name = \"x\", ports = \"1-28\"}]\n";
    std::vector<std::string> moved; /* the lines of the head count too */
    std::vector<wrong_plan> below;
    for (const wrong_plan &wrong : cases)
        moved.push_back(std::to_string(std::stoi(wrong.expected) + 4) + std::strchr(wrong.expected, ':'));
    for (size_t i = 0; i < moved.size(); i++)
        below.push_back({cases[i].text, moved[i].c_str()});
    expect_errors(below, head);
    for (const char *unfit : {"raw", "list"}) {
        const temporary_folder folder;
        const finished end = run(plan_line(folder.path, head + "[[step]]\nrequest = \"" + unfit + "\""));
        EXPECT_EQ(end.code, 2);
        EXPECT_NE(end.err.find(std::string("6:11: request is \"") + unfit + "\", which judges nothing"),
                  std::string::npos)
            << end;
    }
}

TEST(plan_file, shipped_plans_are_right_and_a_dry_run_touches_nothing)
{
    const temporary_folder folder;
    for (const auto &entry : std::filesystem::directory_iterator(PLANS)) {
        const finished end = run({"plan", entry.path(), "--dry-run", "--results", folder.path + "/results"});
        EXPECT_EQ(end.code, 0) << end;
        EXPECT_NE(end.out.find("packet any_speed=true\n"), std::string::npos) << end;
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path + "/results"));
}
