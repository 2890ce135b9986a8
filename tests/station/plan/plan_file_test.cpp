/* SPDX-License-Identifier: MIT
 *
 * Plan files: what a wrong one is answered with before anything is sent, and that the shipped ones are right.
 */
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

#include "bench.h"

static const std::string LABELS = "name = 'a'\nversion = '1'\nproduct = 'p'\n";
static const std::string STEP =
    LABELS + "panel = [{name = 'x', ports = '1-28'}]\n[[step]]\n"; /* whose keys begin in line 6 */

static finished dry_run(const temporary_folder &folder, const std::string &plan)
{
    return run(plan_line(folder.path, plan, {"--dry-run"}));
}

struct wrong_plan {
    const char *text;
    const char *answer; /* after the file's name */
};

static void expect_errors(const std::string &head, std::span<const wrong_plan> cases)
{
    const temporary_folder folder;
    for (const auto &[text, answer] : cases)
        EXPECT_EQ(dry_run(folder, head + text),
                  (finished{2, "", "facmsg-station: plan: " + folder.path + "/plan.toml:" + answer + "\n"}))
            << text;
}

TEST(plan_file, a_wrong_head_is_answered_with_place_and_expectation)
{
    const wrong_plan bare[] = {
        {"", "1:1: found no key name, expected the plan's name"},
        {"naem = 'a'", "1:8: unknown key naem, did you mean name?"},
    };
    expect_errors("", bare);
    const wrong_plan cases[] = {
        {"", "1:1: the unit has no ports, expected [[panel]] tables"},
        {"[[panel]]\nname = 'x'\nports = 1", "1:1: the plan has no steps, expected [[step]] tables"},
        {"[[panel]]\nname = 'x'\nports = 1\n[[panel]]\nname = 'y'\nports = '1-2'",
         "9:9: ports names port 1, which is in panel group x, expected others"},
        {"[[panel]]\nname = 'x'\nports = '1-3,3'", "6:9: ports names port 3 twice, expected each port once"},
        {"[serial]\npattern = '['",
         "5:11: pattern is \"[\", expected an ECMAScript regular expression without back-references"},
        {"[station]\npattern = '[0-9]'\ndefault = 'x'", "6:11: default is \"x\", expected a text that matches [0-9]"},
    };
    expect_errors(LABELS, cases);
}

TEST(plan_file, a_wrong_step_is_answered_with_place_and_expectation)
{
    const wrong_plan cases[] = {
        {"", "5:1: found none, expected one key of request, instruct, ask, pause_s, repeat"},
        {"reqest = 'poe'", "6:10: unknown key reqest, did you mean request?"},
        {"request = 'poe'\nask = '?'",
         "7:7: found request, ask, expected one key of request, instruct, ask, pause_s, repeat"},
        {"ask = 'Green?'", "5:1: found no key name, expected a name for the step"},
        {"name = 'a'\ninstruct = ' '", "7:12: instruct is \" \", expected a text for the operator"},
        {"name = 'a'\nask = 'V'\nlimits = { vlaue = { min = 1 } }",
         "8:20: unknown value vlaue of manual, did you mean value?"},
        {"name = 'a'\npause_s = 0", "7:11: pause_s is 0, expected a whole number from 1 to 86400"},
        {"name = 'a'\nrepeat = 101\n", "7:10: repeat is 101, expected a whole number from 1 to 100"},
        {"name = 'a'\nrepeat = 2", "5:1: the group has no steps, expected [[step.step]] tables"},
        {"name = 'a'\nrepeat = 2\n[[step.step]]\nrequest = 'poe'\n[[step.step]]\nname = 'b'\nrepeat = 2",
         "12:10: found a group in a group, expected a request, an instruction, a question or a pause"},
        {"name = 'a'\nrepeat = 2\n[[step.step]]\nrequest = 'poe'\n[[step]]\nname = 'a'\nrequest = 'poe'",
         "11:8: name is \"a\", which an earlier step has, expected another name"},
        {"request = 'poe'\n[[step]]\nrequest = 'poe'",
         "7:1: name is \"poe\", which an earlier step has, expected another name"},
        {"request = 'poe'\nname = 'P'", "7:8: name is \"P\", expected letters a to z, digits, - and _"},
        {"request = 'poe'\nretries = 10", "7:11: retries is 10, expected a whole number from 0 to 9"},
        {"request = 'packet'\noptions = { speed = '7G' }",
         "7:21: --speed: found '7G', allowed: 10M, 100M, 1G, 2.5G, 5G, 10G or 0 to 255"},
        {"request = 'packet'\noptions = { any_speed = 1 }", "7:25: any_speed is 1, expected true or false"},
        {"request = 'poe'\noptions = { unit = 1.5 }", "7:20: unit is 1.5, expected a number or a text"},
        {"request = 'log-level'", "5:1: LEVEL: expected exactly one value, allowed: -2147483648 to 2147483647"},
        {"request = 'fpga read'\noptions = { address = 0xfffffffc, length = 8 }",
         "7:11: ADDRESS: found '0xfffffffc', allowed: up to 0xfffffff8 for 8 bytes"},
        {"request = 'fpga write'\noptions = { address = 0, hex = 12 }", "7:32: hex is 12, expected a text"},
        {"request = 'broadcast'\nlimits = { fcs_error = { max = 4 } }",
         "7:24: unknown value fcs_error of broadcast, did you mean fcs_errors?"},
        {"request = 'broadcast'\nlimits = { fcs_errors = 4 }",
         "7:25: fcs_errors is 4, expected limits such as { min = 1, max = 5 }"},
        {"request = 'broadcast'\nlimits = { fcs_errors = {} }",
         "7:25: fcs_errors has no limit, expected min, max or equal"},
        {"request = 'broadcast'\nlimits = { fcs_errors = { max = nan } }", "7:33: max is nan, expected a number"},
        {"request = 'flow'\nlimits = { speed_codes_copper = { equal = 'x' } }",
         "7:33: speed_codes_copper is a number, expected numbers"},
        {"request = 'fpga read'\noptions = { address = 0, length = 4 }\nlimits = { data_hex = { max = 4 } }",
         "8:23: data_hex is a text, expected equal = \"…\""},
        {"request = 'poe'\ncovers = '1-29'", "7:10: covers names port 29, expected ports of the panel"},
        {"request = 'flow'\ncovers = 1",
         "7:10: found covers without options.ports, expected both: the reply lists ports by position"},
        {"request = 'flow'\noptions = { ports = '1-28' }\ncovers = '1-2'",
         "8:10: covers and options.ports differ, expected the same ports in both"},
        {"request = 'flow'\noptions = { ports = '1-29' }", "7:11: options names port 29, expected ports of the panel"},
        {"request = 'factory-mode'\ncovers = 1", "7:10: found covers, expected none: factory-mode judges no ports"},
        {"request = 'vop'\nlimits = { vop_value = { min = 5, max = 4 } }", "7:41: max is below min, expected no less"},
        {"request = 'fpga write'\noptions = { address = 0, file = '-' }",
         "7:33: file is \"-\", expected a file: a plan reads nothing from the input"},
        {"request = 'poe'\ntimeout_s = 0", "7:13: timeout_s is 0, expected a whole number from 1 to 86400"},
    };
    expect_errors(STEP, cases);
    for (const std::string unfit : {"raw", "list"}) {
        const finished end = dry_run(temporary_folder(), STEP + "request = '" + unfit + "'");
        EXPECT_EQ(end.code, 2);
        EXPECT_NE(end.err.find("6:11: request is \"" + unfit + "\", which judges nothing"), end.err.npos) << end;
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
    const std::string output = folder.path + "/bytes";
    std::ofstream(output) << "kept as it is";
    EXPECT_EQ(dry_run(folder,
                      STEP + "request = 'fpga read'\noptions = { address = 0, length = 4, output = '" + output + "' }")
                  .code,
              0);
    EXPECT_EQ(std::filesystem::file_size(output), 13u);
    EXPECT_FALSE(std::filesystem::exists(folder.path + "/results"));
    std::istringstream narrow(run_on_terminal({"plan", PLANS "/assisted.toml", "--dry-run"}, "", 40).out);
    for (std::string line; std::getline(narrow, line);)
        EXPECT_LE(line.size(), 41u) << line; /* with its carriage return */
}
