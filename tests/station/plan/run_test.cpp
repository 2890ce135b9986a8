/* SPDX-License-Identifier: MIT
 *
 * Runs of plans that come to their end: what the journal says, step by step, and the exit code.
 */
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "bench.h"
#include "facmsg_protocol.h"

static const words who{"--serial", "SW0001", "--operator", "O", "--station", "FT-1"};

static words with_options(words options)
{
    options.insert(options.end(), who.begin(), who.end());
    return options;
}

/* Runs a plan on a board that the test makes faulty. */
struct board_run {
    temporary_folder made;
    simulated_switch board;
    finished end;
    std::string story;
    board_run(const std::string &steps, const words &options = {}, const std::string &faults = "")
        : board(changed_board(faults)), end(run(plan_line(board.folder.path, plan_with(steps), with_options(options)))),
          story(only_story(board.folder.path))
    {
    }

    std::string changed_board(const std::string &faults)
    {
        const std::string file = made.path + "/board.toml";
        std::ofstream(file) << "base = \"" BOARDS "/healthy-28.toml\"\nname = \"changed\"\n" << faults;
        return file;
    }
};

TEST(plan_run, shipped_plan_tells_a_healthy_board_from_a_faulty_one)
{
    const words line{"plan", PLANS "/final-28.toml", "--serial", "SW24000123", "--operator", "J. Doe"};
    for (const auto &[board, code, said] : {std::tuple{"healthy-28", 0, "PASS"}, {"faulty-28", 1, "FAIL"}}) {
        const simulated_switch tested(board);
        words arguments = line;
        arguments.insert(arguments.end(), {"--results", tested.folder.path + "/results"});
        const bool partial = SANITIZED && code == 0; /* a healthy board's traffic is millions of frames */
        if (partial)
            arguments.insert(arguments.end(), {"--skip", "broadcast-flow,serpentine"});
        const finished end = tested.run(arguments);
        EXPECT_EQ(end.code, partial ? 6 : code) << end;
        const std::string story = only_story(tested.folder.path);
        EXPECT_TRUE(story.ends_with(partial ? "SKIP NOT_APPLICABLE" : std::string("COMPLETE ") + said)) << story;
        EXPECT_EQ(story.find("packet-fail:port13") != std::string::npos, code == 1) << story;
        EXPECT_EQ(end.out.find("final-28 1.0: serial SW24000123, "), 0u) << end;
        const std::string journal = runs_in(tested.folder.path).front() + "/journal.jsonl";
        EXPECT_EQ(std::system((CHECK_JOURNAL " '" + journal + "'").c_str()), 0);
    }
}

TEST(plan_run, a_failure_is_tried_again_and_then_concludes_nothing)
{
    const std::string unreadable = "[[faults]]\nkind = \"failing_call\"\nports = 20\nslot = \"get_port_fcs\"\n";
    const std::string step = "[[step]]\nrequest = \"broadcast\"\nretries = 2\n";
    const board_run passing(step, {}, unreadable + "calls = 1\n");
    EXPECT_EQ(passing.story, "broadcast#1 fcs_errors-fail-retried:port20 step-fail-retried:unit COMPLETE\n"
                             "broadcast#2 COMPLETE\nCOMPLETE PASS");
    EXPECT_EQ(passing.end.code, 0) << passing.end;
    const board_run failing(step, {}, unreadable);
    EXPECT_EQ(failing.story, "broadcast#1 fcs_errors-fail-retried:port20 step-fail-retried:unit COMPLETE\n"
                             "broadcast#2 fcs_errors-fail-retried:port20 step-fail-retried:unit COMPLETE\n"
                             "broadcast#3 fcs_errors-fail:port20 step-fail:unit COMPLETE\nCOMPLETE FAIL");
    EXPECT_EQ(failing.end.code, 1) << failing.end;
    const std::string &shown = failing.end.out; /* as soon as it is known, and by name */
    EXPECT_NE(shown.find("  RETRIED  "), std::string::npos) << shown;
    EXPECT_NE(shown.find(" s  attempt 3 of 3\n    port 20  fcs_errors: "), std::string::npos) << shown;
}

TEST(plan_run, a_failure_that_nothing_judges_the_second_time_is_no_pass)
{
    const board_run once("[[step]]\nrequest = \"prbs\"\nretries = 1\n", {},
                         "[[faults]]\nkind = \"failing_call\"\nports = 25\nslot = \"port_phy_loopback\"\ncalls = 1\n");
    EXPECT_NE(once.story.find("step-fail-retried:unit COMPLETE\nprbs#2 "), std::string::npos) << once.story;
    EXPECT_TRUE(once.story.ends_with("step-unknown:unit COMPLETE\nSKIP NOT_APPLICABLE")) << once.story;
    EXPECT_EQ(once.end.code, 5) << once.end;
}

/* Its number must not go to the journal, which would then hold what was meant for people. */
TEST(plan_run, a_closed_output_leaves_the_journal_alone)
{
    const simulated_switch healthy("healthy-28");
    words line{"/bin/sh", "-c", "exec \"$@\" >&-", "sh"};
    const words program =
        station(plan_line(healthy.folder.path, plan_with("[[step]]\nrequest = \"factory-mode\""), who));
    line.insert(line.end(), program.begin(), program.end());
    EXPECT_EQ(wait_for(start(line, STDOUT_FILENO, STDERR_FILENO)), 3);
    EXPECT_EQ(only_story(healthy.folder.path), "factory-mode#1 COMPLETE\nCOMPLETE PASS");
}

struct told_run {
    const char *steps;
    words options;
    const char *story;
    int code;
};

TEST(plan_run, limits_coverage_and_selection)
{
    const std::string all = "[[step]]\nrequest = \"factory-mode\"\n";
    const told_run cases[] = {
        {"[[step]]\nrequest = \"vop\"\nlimits = { vop_status = { equal = 0 }, vop_value = { max = 53000 } }\n",
         {},
         "vop#1 vop_value-fail:port01",
         1},
        {"[[step]]\nrequest = \"fpga read\"\noptions = { address = 0, length = 4 }\nlimits = { data_hex = { equal = "
         "\"01020304\" } }",
         {},
         "fpga-read#1 data_hex_limit-fail:unit step-fail:unit COMPLETE\nCOMPLETE FAIL",
         1},
        {"[[step]]\nrequest = \"fpga read\"\noptions = { address = 0, length = 4 }\nlimits = { data_hex = { equal = "
         "\"00000000\" } }",
         {},
         "fpga-read#1 COMPLETE\nCOMPLETE PASS",
         0},
        {"[[step]]\nrequest = \"fpga read\"\noptions = { address = 0, length = 4 }",
         {},
         "fpga-read#1 step-unknown:unit COMPLETE\nSKIP NOT_APPLICABLE",
         5},
        {"[[step]]\nrequest = \"poe\"\ncovers = \"9-17\"",
         {},
         "poe#1 coverage-fail:port17 step-fail:unit COMPLETE\nCOMPLETE FAIL",
         1},
        {"[[step]]\nrequest = \"poe\"\ncovers = \"9-15\"",
         {},
         "poe#1 coverage-fail:port16 step-fail:unit COMPLETE\nCOMPLETE FAIL",
         1},
        {"[[step]]\nrequest = \"prbs\"\noptions = { ports = \"25-27\" }\ncovers = \"25-27\"",
         {},
         "prbs#1 status-unknown:? status-unknown:? status-unknown:? status-unknown:? coverage-fail:unit",
         1},
        {"[[step]]\nrequest = \"switch-speed\"\n[[step]]\nrequest = \"fc-report\"\n[[step]]\nrequest = "
         "\"poe-version\"\n",
         {"--only", "fc-report,poe-version"},
         "fc-report#1 no-verdict ERROR\npoe-version#1 COMPLETE\nswitch-speed#1 the run was told to leave the step out "
         "SKIP\nERROR NOT_APPLICABLE",
         3},
        {"[[step]]\nrequest = \"poe-version\"\n[[step]]\nrequest = \"factory-mode\"",
         {"--skip", "factory-mode"},
         "poe-version#1 COMPLETE\nfactory-mode#1 the run was told to leave the step out SKIP\nSKIP NOT_APPLICABLE",
         6},
        {"[[step]]\nname = \"round\"\nrepeat = 2\n[[step.step]]\nrequest = \"poe-version\"\n[[step]]\nrequest = "
         "\"factory-mode\"",
         {"--skip", "round"},
         "factory-mode#1 COMPLETE\nround.1.poe-version#1 the run was told to leave the step out SKIP\n"
         "round.2.poe-version#1 the run was told to leave the step out SKIP\nSKIP NOT_APPLICABLE",
         6},
        {"[[step]]\nrequest = \"poe\"\noptions = { classes = \"1\" }\nlimits = { pd_class = { equal = 1 } }",
         {},
         "poe#1 class-fail:port09 class-fail:port10 class-fail:port11 class-fail:port12 class-fail:port13 "
         "class-fail:port14 class-fail:port15 class-fail:port16 pd_class_limit-not-tested:port09",
         1},
        {"[[step]]\nrequest = \"poe-version\"", {"--only", "poe-version"}, "poe-version#1 COMPLETE\nCOMPLETE PASS", 0},
        {"[[step]]\nrequest = \"poe\"\ncovers = \"9-17\"\n[[step]]\nrequest = \"factory-mode\"",
         {"--stop-on-fail"},
         "poe#1 coverage-fail:port17 step-fail:unit COMPLETE\nfactory-mode#1 step poe failed, and the run stops there "
         "SKIP\nCOMPLETE FAIL",
         1},
        {"[[step]]\nrequest = \"fc-report\"\nstop_on_fail = true\n[[step]]\nrequest = \"factory-mode\"",
         {},
         "fc-report#1 no-verdict ERROR\nfactory-mode#1 step fc-report had no verdict, and the run stops there SKIP\n"
         "ERROR NOT_APPLICABLE",
         3},
        {"[[step]]\nrequest = \"poe\"\ncovers = \"9-17\"\n[[step]]\nrequest = \"factory-mode\"",
         {},
         "poe#1 coverage-fail:port17 step-fail:unit COMPLETE\nfactory-mode#1 COMPLETE\nCOMPLETE FAIL",
         1},
    };
    for (const told_run &told : cases) {
        const board_run done(told.steps, told.options);
        EXPECT_EQ(done.story.substr(0, std::strlen(told.story)), told.story) << done.end;
        EXPECT_EQ(done.end.code, told.code) << told.steps << done.end;
    }
}

/* The limit of the station's own, no error at all, judges only what the plan does not. */
TEST(plan_run, one_count_fails_once_and_by_the_plan)
{
    const std::pair<const char *, const char *> cases[] = {
        {"{ max = 1e9 }", ""},
        {"{ max = 0.5 }", " fcs_errors-fail:port15"},
        {"{ equal = 0 }", " fcs_errors_limit-fail:port15"},
    };
    for (const auto &[limit, found] : cases) {
        const board_run done(std::string("[[step]]\nrequest = \"broadcast\"\nlimits = { fcs_errors = ") + limit + " }",
                             {}, "[[faults]]\nkind = \"fcs_errors\"\nevery = 1\nports = 15\n");
        EXPECT_EQ(done.story,
                  std::string("broadcast#1") + found +
                      (*found == '\0' ? " COMPLETE\nCOMPLETE PASS" : " step-fail:unit COMPLETE\nCOMPLETE FAIL"));
    }
}

TEST(plan_run, a_port_that_the_unit_does_not_have_is_no_pass)
{
    const fake_service service(reply_of<poe_test_reply>(FACMSG_PORT_POE, [](poe_test_reply &reply) {
        reply.port_count = 1;
        reply.ports[0] = 29;
    }));
    const finished end =
        run(plan_line(service.folder.path, plan_with("[[step]]\nrequest = \"poe\"\nretries = 3"), who));
    EXPECT_EQ(end.code, 3) << end;
    EXPECT_EQ(only_story(service.folder.path), "poe#1 no-verdict ERROR\nERROR NOT_APPLICABLE");
}

TEST(plan_usage, what_is_given_is_checked_before_anything_is_sent)
{
    const temporary_folder folder;
    const std::string plan = plan_with("[[step]]\nrequest = \"poe\"\n[[step]]\nrequest = \"vop\"");
    const std::pair<words, finished> cases[] = {
        {{"--only", "peo"}, {2, "", "--only: unknown step 'peo', did you mean poe?"}},
        {{"--skip", "vop,"}, {2, "", "--serial: needed when nobody can be asked, a text that matches SW[0-9]{4}"}},
        {{"--skip", "vop,poe"}, {5, "", "nothing was run: --only and --skip leave no step"}},
        {{"--serial", "SW00012", "--no-input"},
         {2, "", "--serial: found 'SW00012', allowed: a text that matches SW[0-9]{4}"}},
        {{"--serial", "SW0001"}, {2, "", "--operator: needed when nobody can be asked, 1 to 64 readable characters"}},
        {{"--serial", "SW0001", "--operator", "J\xff"},
         {2, "",
          "--operator: found 'J\xEF\xBF\xBD', which is no readable UTF-8, allowed: 1 to 64 readable characters"}},
        {{"--only", ""}, {2, "", "--only: expected exactly one value"}},
        {{"--grace", "x"}, {2, "", "--grace: found 'x', allowed: 0 to 3600"}},
        {{"--dri-run"}, {2, "", "unknown option '--dri-run', did you mean --dry-run?"}},
        {{"--results", "/dev/null"},
         {2, "", "--results: '/dev/null' is no directory, allowed: a directory, or where one can be made"}},
    };
    for (const auto &[options, expected] : cases)
        EXPECT_EQ(run(plan_line(folder.path, plan, options)),
                  (finished{expected.code, "", "facmsg-station: plan: " + expected.err + "\n"}));
    const std::string greedy = "name = \"g\"\nversion = \"1\"\nproduct = \"p\"\npanel = [{name = \"x\", ports = 1}]\n"
                               "[serial]\npattern = \"(a+)+b\"\n[[step]]\nrequest = \"poe\"\n";
    EXPECT_EQ(run(plan_line(folder.path, greedy, {"--serial", std::string(250, 'a')})).code, 2); /* ends at all */
    EXPECT_EQ(run({"paln"}).err, "facmsg-station: unknown subcommand 'paln', did you mean plan?\n");
    EXPECT_TRUE(runs_in(folder.path).empty());
}

TEST(plan_usage, asks_on_a_terminal_and_takes_no_answer_from_before)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    const finished end = talk_on_terminal(plan_line(folder, plan_with("[[step]]\nrequest = \"factory-mode\"")),
                                          {{"serial number (a text that matches SW[0-9]{4}): ", "SW1\n"},
                                           {"found 'SW1', expected a text that matches SW[0-9]{4}", ""},
                                           {"serial number (a text that matches SW[0-9]{4}): ", " SW0002 \n"},
                                           {"operator (1 to 64 readable characters): ", "Jane\n"}},
                                          "SW9999\nEve\n");
    EXPECT_EQ(end.code, 0) << end;
    ASSERT_EQ(runs_in(folder).size(), 1u) << end;
    const auto head = journal_of(runs_in(folder).front())[1]["testRunArtifact"]["testRunStart"];
    EXPECT_EQ(head["dutInfo"]["hardwareInfos"][0]["serialNumber"], "SW0002");
    EXPECT_EQ(head["metadata"]["operator"], "Jane");
    EXPECT_FALSE(head["metadata"]["station"].get<std::string>().empty());
    EXPECT_EQ(head["metadata"]["run_id"].get<std::string>().size(), 32u);
    EXPECT_NE(end.out.find("step 1 of 1  factory-mode  0 s of about 1 s"), std::string::npos) << end;
    EXPECT_NE(end.out.find("step 1 of 1  factory-mode  PASS"), std::string::npos) << end; /* stays */
}

TEST(plan_usage, asks_nothing_when_told_so)
{
    const temporary_folder folder;
    const finished end = run_on_terminal(
        plan_line(folder.path, plan_with("[[step]]\nrequest = \"factory-mode\""), {"--no-input"}), "SW0002\nJane\n");
    EXPECT_EQ(end.code, 2) << end;
    EXPECT_NE(end.out.find("--serial: needed when nobody can be asked"), std::string::npos) << end;
}

TEST(plan_usage, serial_numbers_make_safe_folders_and_no_folder_is_used_twice)
{
    const simulated_switch healthy("healthy-28");
    std::string plan = plan_with("[[step]]\nrequest = \"factory-mode\"");
    plan.replace(plan.find("SW[0-9]{4}"), 10, ".*");
    for (const std::string serial : {"../../x y", "../../x y", ".hidden"}) {
        words options = who;
        options[1] = serial;
        EXPECT_EQ(run(plan_line(healthy.folder.path, plan, options)).code, 0);
    }
    const std::vector<std::string> runs = runs_in(healthy.folder.path);
    ASSERT_EQ(runs.size(), 3u);
    for (const std::string &folder : runs) {
        const std::string name = std::filesystem::path(folder).filename();
        EXPECT_TRUE(name.find("Z-_.._.._x_y") != std::string::npos || name.ends_with("Z-_.hidden")) << name;
    }
}

/* The lines of a kind in a journal, those of steps alone. */
static std::vector<nlohmann::json> artifacts(const std::string &run, const char *kind)
{
    std::vector<nlohmann::json> found;
    for (const nlohmann::json &line : journal_of(run))
        if (line.contains("testStepArtifact") && line["testStepArtifact"].contains(kind))
            found.push_back(line["testStepArtifact"][kind]);
    return found;
}

TEST(plan_by_hand, the_operator_does_sees_and_measures)
{
    const std::pair<const char *, int> cases[] = {{"54.5\n", 0}, {"57.1\n", 1}};
    for (const auto &[volts, code] : cases) {
        const simulated_switch healthy("healthy-28");
        const std::string folder = healthy.folder.path;
        const finished end = talk_on_terminal({"--directory", folder, "plan", PLANS "/assisted.toml", "--serial",
                                               "SW00000001", "--operator", "O", "--results", folder + "/results"},
                                              {{"press Enter: ", "\n"},
                                               {"all ports green? [y/n] ", "perhaps\n"},
                                               {"found 'perhaps', expected y or n", ""},
                                               {"all ports green? [y/n] ", "n\n"},
                                               {"was answered no", ""},
                                               {"all ports green? [y/n] ", "Y\n"},
                                               {"at test point 1 in V: ", volts}},
                                              "\ny\n");
        EXPECT_EQ(end.code, code) << end;
        const std::string begin = "plug-in#1 step-unknown:unit COMPLETE\n"
                                  "leds#1 answer-fail-retried:unit step-fail-retried:unit COMPLETE\nleds#2 COMPLETE\n";
        const std::string rounds = "supply#1 COMPLETE\nrounds.1.settle#1 step-unknown:unit COMPLETE\n"
                                   "rounds.1.packet#1 COMPLETE\nrounds.2.settle#1 step-unknown:unit COMPLETE\n"
                                   "rounds.2.packet#1 COMPLETE\nvop#1 COMPLETE\nCOMPLETE PASS";
        const std::string story = only_story(folder);
        EXPECT_EQ(story.substr(0, begin.size() + rounds.size())
                      .find(begin + (code == 0 ? rounds : "supply#1 value_limit-fail:unit")),
                  0u)
            << story;
        const std::string run = runs_in(folder).front();
        EXPECT_EQ(std::system((CHECK_JOURNAL " '" + run + "/journal.jsonl'").c_str()), 0);
        const auto values = artifacts(run, "measurement");
        EXPECT_EQ(values[0]["value"], "no");
        EXPECT_EQ(values[2]["value"].dump() + "\n", volts);
        EXPECT_EQ(values[2]["unit"], "V");
        EXPECT_EQ(code == 0 ? values.back()["unit"] : "mV", "mV");
        EXPECT_EQ(artifacts(run, "extension")[1]["content"]["options"]["ask"], "Are the LEDs of all ports green?");
        const std::string digest = journal_of(run)[1]["testRunArtifact"]["testRunStart"]["parameters"]["plan_sha256"];
        EXPECT_EQ(std::system(("echo '" + digest + "  " PLANS "/assisted.toml' | sha256sum --check --quiet").c_str()),
                  0);
    }
}

TEST(plan_by_hand, nobody_there_is_told_before_anything_is_sent)
{
    const temporary_folder folder;
    for (const char *option : {"--no-input", "--no-progress"}) {
        const finished end = run({"plan", PLANS "/assisted.toml", "--serial", "SW00000001", "--operator", "O",
                                  "--results", folder.path + "/results", option});
        EXPECT_EQ(end.code, 2) << end;
        EXPECT_NE(end.err.find("step plug-in waits for the operator, but "), std::string::npos) << end;
    }
    EXPECT_TRUE(runs_in(folder.path).empty());
}

TEST(plan_by_hand, an_interruption_ends_a_question_and_a_pause_with_their_record)
{
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"ask = \"Green?\"", "Green? [y/n] ", "the question was not answered"},
        {"pause_s = 3600", " of about 3600 s", "the pause was cut short"}};
    for (const auto &[what, shown, told] : cases) {
        const temporary_folder folder;
        const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        grantpt(terminal);
        unlockpt(terminal);
        const int screen = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const std::string plan = plan_with(std::string("[[step]]\nname = \"a\"\n") + what);
        const pid_t pid = start(station(plan_line(folder.path, plan, who)), screen, screen, 0, screen);
        close(screen);
        std::string seen;
        for (char letter; read(terminal, &letter, 1) == 1;) {
            seen += letter;
            if (seen.ends_with(shown))
                kill(pid, SIGTERM);
        }
        EXPECT_EQ(wait_for(pid), 143) << seen;
        close(terminal);
        EXPECT_EQ(only_story(folder.path), std::string("a#1 ") + told +
                                               ": the run was interrupted SKIP\n"
                                               "The run was interrupted by SIGTERM. SKIP NOT_APPLICABLE");
    }
}

TEST(plan_by_hand, the_end_of_the_input_ends_the_run)
{
    const temporary_folder folder;
    const std::string plan =
        plan_with("[[step]]\nname = \"a\"\nask = \"Green?\"\n[[step]]\nname = \"b\"\nask = \"Red?\"");
    const finished end = talk_on_terminal(plan_line(folder.path, plan, who), {{"Green? [y/n] ", "\x04"}}, "");
    EXPECT_EQ(end.code, 3) << end;
    EXPECT_EQ(only_story(folder.path), "a#1 input-ended ERROR\nb#1 the input ended, so nobody answers any longer SKIP\n"
                                       "ERROR NOT_APPLICABLE");
}

TEST(plan_json, is_one_object)
{
    const simulated_switch faulty("faulty-28");
    const words steps{"--only", "factory-mode,round", "--json"};
    const std::string plan = plan_with("[[step]]\nrequest = \"factory-mode\"\n[[step]]\nname = \"round\"\nrepeat = 2\n"
                                       "[[step.step]]\nrequest = \"packet\"\n[[step]]\nrequest = \"vop\"\n");
    const finished listed =
        run(plan_line(faulty.folder.path, plan, with_options({"--json", "--dry-run", "--only", "round"})));
    const auto names = nlohmann::json::parse(listed.out)["steps"];
    ASSERT_EQ(names.size(), 2u) << listed;
    EXPECT_EQ(names[1]["name"], "round.2.packet");
    const finished end = run(plan_line(faulty.folder.path, plan, with_options(steps)));
    const auto told = nlohmann::json::parse(end.out);
    EXPECT_EQ(told["verdict"], "FAIL") << end;
    EXPECT_EQ(told["exit_code"], end.code);
    EXPECT_EQ(told["run_dir"], runs_in(faulty.folder.path).front());
    EXPECT_EQ(told["failures"].size(), 4u) << end;
    EXPECT_NE(end.err.find("step 2 of 3  round.1.packet  FAIL"), std::string::npos) << end;
}
