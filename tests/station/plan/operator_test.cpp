/* SPDX-License-Identifier: MIT
 *
 * The operator at the terminal: labels that are asked for, instructions, questions and pauses.
 */
#include <cstdlib>
#include <gtest/gtest.h>
#include <signal.h>
#include <sstream>
#include <unistd.h>

#include "runs.h"

TEST(plan_operator, is_asked_for_labels_and_no_answer_from_before_counts)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    const std::string labels = "station = {default = 'FT-1'}\noperator = {hint = 'badge'}\n";
    const finished end =
        run_on_terminal(plan_line(folder, plan_with("{request = 'factory-mode'}") + labels), "SW9999\nEve\n",
                        {{"serial number (a text that matches SW[0-9]{4}): ", "SW1\n"},
                         {"found 'SW1', expected a text that matches SW[0-9]{4}", ""},
                         {"serial number (a text that matches SW[0-9]{4}): ", " SW0002 \n"},
                         {"operator (badge): ", "Jane\n"},
                         {"[....................] step 1 of 1  factory-mode  0 s of about 1 s", ""},
                         {"step 1 of 1  factory-mode  PASS", ""}}); /* stays */
    EXPECT_EQ(end.code, 0) << end;
    ASSERT_EQ(runs_in(folder).size(), 1u) << end;
    const auto head = journal_of(runs_in(folder).front())[1]["testRunArtifact"]["testRunStart"];
    EXPECT_EQ(head["dutInfo"]["hardwareInfos"][0]["serialNumber"], "SW0002");
    EXPECT_EQ(head["metadata"]["operator"], "Jane");
    EXPECT_EQ(head["metadata"]["station"], "FT-1");
    EXPECT_EQ(head["metadata"]["run_id"].get<std::string>().size(), 32u);
}

TEST(plan_operator, reads_on_a_narrow_terminal)
{
    const simulated_switch faulty("healthy-28", "faults = [{kind = 'poe_wrong_class', ports = '13', class = 2}]");
    const words table{"--directory", faulty.folder.path, "poe", "--classes", "4"};
    const std::string port = "class 2, overload ok,\r\n      off ok\r\n      Class 2 of the powered";
    EXPECT_NE(run_on_terminal(table, "", {}, 40).out.find(port), std::string::npos);
    const fake_service slow([](const std::string &) { return usleep(1'600'000), reply_bytes(10, "\0\0\0", 4); });
    const words line = steps_line(slow.folder.path, "{request = 'factory-mode'}");
    const finished run = run_on_terminal(
        line, "", {{"[........] 1/1 factory-mode  0 s\r", ""}, {"[#######.] 1/1 factory-mode  1 s\r", ""}}, 40);
    for (const words &narrow : {words{"plan", PLANS "/assisted.toml", "--dry-run"}, words{"--help"}, words{"list"},
                                words{"fpga", "write", "--help"}}) {
        std::istringstream text(run_on_terminal(narrow, "", {}, 40).out);
        for (std::string row; std::getline(text, row);)
            EXPECT_LE(row.size(), 41u) << row; /* with its carriage return */
    }
}

TEST(plan_operator, is_asked_nothing_when_told_so)
{
    const temporary_folder folder;
    const words assisted{"plan", PLANS "/assisted.toml", "--serial", "SW00000001", "--operator", "O", "--no-input"};
    const words unlabelled = plan_line(folder.path, plan_with("{request = 'factory-mode'}"), {"--no-input"});
    EXPECT_EQ(run_on_terminal(unlabelled, "SW0002\n", {{"--serial: needed when nobody can be asked", ""}}).code, 2);
    EXPECT_EQ(run_on_terminal(assisted, "\n", {{"but --no-input was\r\n    given; allowed: --skip plug-in", ""}}).code,
              2);
}

/* The lines of a kind in a journal, those of steps alone. */
static std::vector<nlohmann::json> artifacts(const std::string &run, const char *kind)
{
    std::vector<nlohmann::json> lines;
    for (const nlohmann::json &line : journal_of(run))
        if (line.contains("testStepArtifact") && line["testStepArtifact"].contains(kind))
            lines.push_back(line["testStepArtifact"][kind]);
    return lines;
}

TEST(plan_operator, does_sees_and_measures)
{
    for (const auto &[volts, code] : {std::pair{"54.5\n", 0}, {"57.1\n", 1}}) {
        const simulated_switch healthy("healthy-28");
        const std::string folder = healthy.folder.path;
        const words line{"--directory", folder, "plan",      PLANS "/assisted.toml", "--serial", "SW00000001",
                         "--operator",  "O",    "--results", folder + "/results"};
        const finished end =
            run_on_terminal(line, "\ny\n",
                            {{"step 1 of 8, plug-in: Put a loopback plug into each of the ports 1 to 28. Then", ""},
                             {"press Enter: ", "\n"},
                             {"step 2 of 8, leds: Are the LEDs of all ports green? [y/n] ", "perhaps\n"},
                             {"found 'perhaps', expected y or n", ""},
                             {"all ports green? [y/n] ", "n\n"},
                             {"was answered no", ""},
                             {"all ports green? [y/n] ", "Y\n"},
                             {"at test point 1 in V: ", volts}});
        EXPECT_EQ(end.code, code) << end;
        const std::string bar = "[#######.............] step 8 of 8  vop  0 s of about 82 s";
        EXPECT_EQ(end.out.find(bar) != end.out.npos, code == 0) << end;
        const std::string story = std::string("plug-in#1 step-unknown:unit COMPLETE\n"
                                              "leds#1 answer-fail-retried:unit step-fail-retried:unit COMPLETE\n"
                                              "leds#2 COMPLETE\n") +
                                  (code == 0 ? "supply#1 COMPLETE\nrounds.1.settle#1 step-unknown:unit COMPLETE\n"
                                               "rounds.1.packet#1 COMPLETE\nrounds.2.settle#1 step-unknown:unit "
                                               "COMPLETE\nrounds.2.packet#1 COMPLETE\nvop#1 COMPLETE\nCOMPLETE PASS"
                                             : "supply#1 value_limit-fail:unit");
        EXPECT_EQ(only_story(folder).substr(0, story.size()), story);
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

TEST(plan_operator, answers_by_texts_and_numbers)
{
    const temporary_folder folder;
    const words line = steps_line(folder.path, "{name = 'a', ask = 'Label', limits = {value = {equal = 'B 7'}}}, "
                                               "{name = 'b', ask = 'Load', unit = 'Ohm', retries = 1}");
    const finished end = run_on_terminal(line, "",
                                         {{"step 1 of 2, a: Label: ", "\n"},
                                          {"found '', expected a text", ""},
                                          {"Label: ", " B 7\t\n"},
                                          {"Load in Ohm: ", "12 pieces\n"},
                                          {"Load in Ohm: ", "inf\n"},
                                          {"Load in Ohm: ", "12\n"}});
    EXPECT_EQ(end.code, 0) << end;
    EXPECT_EQ(only_story(folder.path), "a#1 COMPLETE\nb#1 step-unknown:unit COMPLETE\nCOMPLETE PASS");
}

TEST(plan_operator, is_interrupted_in_a_question_and_a_pause_with_their_record)
{
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"ask = 'Green?'", "Green? [y/n] ", "the question was not answered"},
        {"pause_s = 3600", " of about 3600 s", "the pause was cut short"}};
    for (const auto &[step, question, sentence] : cases) {
        const temporary_folder folder;
        const words line = steps_line(folder.path, std::string("{name = 'a', ") + step + "}");
        const finished end = run_on_terminal(line, "", {{question, END_BY + std::to_string(SIGTERM)}});
        EXPECT_EQ(end.code, 143) << end;
        EXPECT_EQ(only_story(folder.path), std::string("a#1 ") + sentence +
                                               ": the run was interrupted SKIP\n"
                                               "The run was interrupted by SIGTERM. SKIP NOT_APPLICABLE");
    }
}

TEST(plan_operator, ends_the_run_with_the_input)
{
    const temporary_folder folder;
    const words unlabelled = plan_line(folder.path, plan_with("{request = 'factory-mode'}"));
    EXPECT_EQ(run_on_terminal(unlabelled, "", {{"serial number (", "\x04"}, {": found the end of", ""}}).code, 2);
    const words line = steps_line(folder.path, "{name = 'a', ask = 'Green?'}, {name = 'b', ask = 'Red?'}");
    const finished end = run_on_terminal(line, "", {{"Green? [y/n] ", "\x04"}});
    EXPECT_EQ(end.code, 3) << end;
    EXPECT_EQ(only_story(folder.path), "a#1 input-ended ERROR\nb#1 the input ended, so nobody answers any longer SKIP\n"
                                       "ERROR NOT_APPLICABLE");
}
