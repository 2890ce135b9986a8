/* SPDX-License-Identifier: MIT
 *
 * The operator at the terminal: labels that are asked for, instructions, questions and pauses.
 */
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "bench.h"

TEST(plan_operator, is_asked_for_labels_and_no_answer_from_before_counts)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    const finished end = talk_on_terminal(plan_line(folder, plan_with("{request = 'factory-mode'}")),
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
    EXPECT_NE(end.out.find("[....................] step 1 of 1  factory-mode  0 s of about 1 s"), end.out.npos) << end;
    EXPECT_NE(end.out.find("step 1 of 1  factory-mode  PASS"), end.out.npos) << end; /* stays */
    const finished narrow = run_on_terminal(steps_line(folder, "{request = 'factory-mode'}"), "", 40);
    EXPECT_NE(narrow.out.find("[........] 1/1 factory-mode  0 s\r"), narrow.out.npos) << narrow;
}

TEST(plan_operator, is_asked_nothing_when_told_so_or_nobody_is_there)
{
    const temporary_folder folder;
    const words assisted{"plan", PLANS "/assisted.toml", "--serial", "SW00000001", "--operator", "O"};
    words unasked = assisted;
    unasked.push_back("--no-input");
    const std::pair<finished, const char *> cases[] = {
        {run_on_terminal(plan_line(folder.path, plan_with("{request = 'factory-mode'}"), {"--no-input"}), "SW0002\n"),
         "--serial: needed when nobody can be asked"},
        {run_on_terminal(unasked, "\n"), "but --no-input was\r\n    given; allowed: --skip plug-in"},
        {run(assisted), "step plug-in waits for the operator, but there is no terminal to ask at"},
    };
    for (const auto &[end, sentence] : cases) {
        EXPECT_EQ(end.code, 2) << end;
        EXPECT_NE((end.out + end.err).find(sentence), end.out.npos) << end;
    }
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
        const finished end =
            talk_on_terminal({"--directory", folder, "plan", PLANS "/assisted.toml", "--serial", "SW00000001",
                              "--operator", "O", "--results", folder + "/results"},
                             {{"step 1 of 8, plug-in: Put a loopback plug into each of the ports 1 to 28. Then", ""},
                              {"press Enter: ", "\n"},
                              {"step 2 of 8, leds: Are the LEDs of all ports green? [y/n] ", "perhaps\n"},
                              {"found 'perhaps', expected y or n", ""},
                              {"all ports green? [y/n] ", "n\n"},
                              {"was answered no", ""},
                              {"all ports green? [y/n] ", "Y\n"},
                              {"at test point 1 in V: ", volts}},
                             "\ny\n");
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

TEST(plan_operator, is_interrupted_in_a_question_and_a_pause_with_their_record)
{
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"ask = 'Green?'", "Green? [y/n] ", "the question was not answered"},
        {"pause_s = 3600", " of about 3600 s", "the pause was cut short"}};
    for (const auto &[step, question, sentence] : cases) {
        const temporary_folder folder;
        const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        grantpt(terminal);
        unlockpt(terminal);
        const int screen = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const words line = steps_line(folder.path, std::string("{name = 'a', ") + step + "}");
        const pid_t pid = start(station(line), screen, screen, 0, screen);
        close(screen);
        std::string shown;
        for (char letter; read(terminal, &letter, 1) == 1;) {
            shown += letter;
            if (shown.ends_with(question))
                kill(pid, SIGTERM);
        }
        EXPECT_EQ(wait_for(pid), 143) << shown;
        close(terminal);
        EXPECT_EQ(only_story(folder.path), std::string("a#1 ") + sentence +
                                               ": the run was interrupted SKIP\n"
                                               "The run was interrupted by SIGTERM. SKIP NOT_APPLICABLE");
    }
}

TEST(plan_operator, ends_the_run_with_the_input)
{
    const temporary_folder folder;
    const words line = steps_line(folder.path, "{name = 'a', ask = 'Green?'}, {name = 'b', ask = 'Red?'}");
    const finished end = talk_on_terminal(line, {{"Green? [y/n] ", "\x04"}}, "");
    EXPECT_EQ(end.code, 3) << end;
    EXPECT_EQ(only_story(folder.path), "a#1 input-ended ERROR\nb#1 the input ended, so nobody answers any longer SKIP\n"
                                       "ERROR NOT_APPLICABLE");
}
