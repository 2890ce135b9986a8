/* SPDX-License-Identifier: MIT
 *
 * Runs of plans that are cut short: nobody answers, somebody interrupts, the disk is full, the program is killed.
 */
#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <regex>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "runs.h"

static const std::string ONE_STEP = "{request = 'factory-mode', timeout_s = 2}";
static const std::string NOT_WHOLE = "SKIP NOT_APPLICABLE";

static std::string two_steps(const std::string &timeout_s = "1")
{
    return "{request = 'factory-mode', retries = 3, timeout_s = " + timeout_s + "}, {request = 'poe'}";
}

/* Answers factory-mode. */
static void answer(const slow_service &service)
{
    const int32_t result = 0;
    service.socket.answer(reply_bytes(10, &result, sizeof(result)));
}

TEST(plan_end, nobody_answers)
{
    slow_service deaf, busy;
    const running_station waits_for_reply(steps_line(deaf.folder.path, two_steps(), {"--busy-timeout", "3600"}));
    const running_station waits_for_service(steps_line(busy.folder.path, two_steps(), {"--busy-timeout", "1"}));
    EXPECT_EQ(read_to(waits_for_reply.out, "\n"),
              "test 1: serial SW0001, 2 steps, about 27 s expected\n"); /* at once */
    deaf.socket.take_request();
    EXPECT_EQ(wait_for(waits_for_reply.pid), 3);
    EXPECT_EQ(wait_for(waits_for_service.pid), 3);
    const std::string rest = " ERROR\npoe#1 the service did not answer an earlier step SKIP\nERROR NOT_APPLICABLE";
    EXPECT_EQ(only_story(deaf.folder.path), "factory-mode#1 timeout" + rest);
    EXPECT_EQ(only_story(busy.folder.path), "factory-mode#1 busy" + rest);
    EXPECT_EQ(run(steps_line(temporary_folder().path, two_steps())).code, 3);
}

TEST(plan_end, the_time_of_a_step_begins_when_the_service_does)
{
    const std::string waiting = "waiting for the service: it is still at work for somebody else";
    slow_service busy;
    const running_station plan(steps_line(busy.folder.path, ONE_STEP));
    EXPECT_EQ(read_to(plan.err, "\n"), "facmsg-station: plan: " + waiting + "\n"); /* after 2 s */
    busy.socket.take_request();
    answer(busy);
    EXPECT_EQ(wait_for(plan.pid), 0);
    EXPECT_EQ(only_story(busy.folder.path),
              "factory-mode#1 " + waiting + " the service has begun the request COMPLETE\nCOMPLETE PASS");
}

/* Interrupts as a time limit does it: the program, and its group. A terminal that closes takes the outputs with it. */
static void expect_orderly_end(int number, int again, bool answered)
{
    slow_service service;
    running_station plan(steps_line(service.folder.path, two_steps("60"), {"--grace", answered ? "60" : "0"}));
    service.socket.take_request();
    if (number == SIGHUP)
        plan.close_outputs();
    kill(plan.pid, number);
    kill(plan.pid, again);
    const std::string waiting = answered && number != SIGHUP ? "waiting for factory-mode to end, at most 60 s" : "";
    EXPECT_NE(read_to(plan.err, waiting).find(waiting), std::string::npos);
    if (answered)
        answer(service);
    EXPECT_EQ(wait_for(plan.pid), 128 + number);
    const std::string given_up = "interrupted; the service goes on with the request it has begun SKIP\n";
    EXPECT_EQ(only_story(service.folder.path),
              "factory-mode#1 " + (answered ? "COMPLETE\n" : given_up) +
                  "poe#1 the run was interrupted SKIP\nThe run was interrupted by SIG" + sigabbrev_np(number) + ". " +
                  NOT_WHOLE);
    for (const char *report : {"/junit.xml", "/results.csv", "/report.html"})
        EXPECT_GT(std::filesystem::file_size(runs_in(service.folder.path).front() + report), 0u);
}

TEST(plan_end, an_interruption_lets_the_request_end_or_gives_it_up)
{
    for (const bool answered : {true, false}) {
        expect_orderly_end(SIGINT, SIGTERM, answered);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
            expect_orderly_end(number, number, answered);
    }
    for (const int number : {SIGINT, SIGTERM}) { /* a later one leaves at once */
        slow_service service;
        const running_station plan(steps_line(service.folder.path, two_steps("60")));
        service.socket.take_request();
        kill(plan.pid, SIGINT);
        read_to(plan.err, "\n");
        usleep(600'000);
        kill(plan.pid, number);
        EXPECT_EQ(wait_for(plan.pid), 128 + number);
        EXPECT_EQ(story_of(runs_in(service.folder.path).front()), "factory-mode#1");
    }
}

TEST(plan_end, nohup_lets_a_run_outlive_its_terminal)
{
    slow_service service;
    signal(SIGHUP, SIG_IGN); /* which a program inherits */
    const running_station plan(steps_line(service.folder.path, ONE_STEP));
    signal(SIGHUP, SIG_DFL);
    service.socket.take_request();
    kill(plan.pid, SIGHUP);
    answer(service);
    EXPECT_EQ(wait_for(plan.pid), 0);
}

/* The lock is the process's: it ends when that is killed. */
TEST(plan_end, one_station_at_a_time)
{
    slow_service service;
    const std::string folder = service.folder.path;
    const words line = steps_line(folder, two_steps("600")); /* longer than this lasts */
    const running_station first(line);
    service.socket.take_request();
    const std::string holder = "process " + std::to_string(first.pid) + ": plan test 1, serial number SW0001, since ";
    const std::regex refusal("facmsg-station: [a-z-]+: another station is at the service in directory '.*': " + holder +
                             ".* UTC; --wait waits for its end\n");
    for (const words &second : {line, {"--directory", folder, "log-level", "0"}}) {
        const finished end = run(second);
        EXPECT_EQ(end.code, 3) << end;
        EXPECT_TRUE(std::regex_match(end.err, refusal)) << end;
    }
    EXPECT_EQ(runs_in(folder).size(), 1u);
    const running_station impatient({"--directory", folder, "packet", "--wait"});
    EXPECT_EQ(read_to(impatient.err, holder), "facmsg-station: packet: waiting for " + holder);
    kill(impatient.pid, SIGINT);
    EXPECT_EQ(wait_for(impatient.pid), 130);
    const running_station patient({"--directory", folder, "factory-mode", "--wait"});
    read_to(patient.err, holder);
    kill(first.pid, SIGKILL);
    wait_for(first.pid);
    service.socket.take_request();
    answer(service);
    EXPECT_EQ(wait_for(patient.pid), 0);
}

static void expect_not_saved(const finished &end)
{
    EXPECT_EQ(end.code, 4) << end;
    EXPECT_NE(end.out.find("RESULTS NOT SAVED"), end.out.npos) << end;
    EXPECT_EQ(end.out.find("\nPASS"), end.out.npos) << end;
}

/* A limit on the size of files stands for a disk that fills up, at every stage of a run. */
TEST(plan_end, results_that_cannot_be_kept_are_never_a_pass)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    const words line = steps_line(folder, two_steps());
    for (const std::string &results : {folder + "/board.toml/below", std::string("/proc/none")})
        expect_not_saved(run(steps_line(folder, two_steps(), {"--results", results})));
    if (geteuid() == 0) /* root may write anywhere, somebody else may not */
        expect_not_saved(run(line, 65534));
    EXPECT_TRUE(runs_in(folder).empty());
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    ASSERT_EQ(run(line).code, 0);
    const auto whole = static_cast<double>(std::filesystem::file_size(runs_in(folder).front() + "/journal.jsonl"));
    for (const double part : {0.005, 0.05, 0.3, 0.7, 0.999, 1.001}) { /* at last only the reports find no room */
        const rlimit small{static_cast<rlim_t>(whole * part), before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        const running_station plan(line);
        setrlimit(RLIMIT_FSIZE, &before);
        const std::string out = read_to(plan.out, THE_END), err = read_to(plan.err, THE_END);
        expect_not_saved({wait_for(plan.pid), out, err});
        EXPECT_NE(err.find("cannot write "), err.npos) << err;
    }
}

/* Every step that was said to have ended is in the journal, whenever the program is killed. */
static void expect_record(const std::string &shown, const std::string &folder)
{
    const std::vector<std::string> runs = runs_in(folder);
    const std::string story = runs.empty() ? "" : story_of(runs.back());
    for (const std::string step : {"factory-mode", "poe"})
        EXPECT_TRUE(shown.find("  " + step + "  PASS") == shown.npos ||
                    story.find(step + "#1 COMPLETE\n") != story.npos)
            << shown << story;
    if (runs.empty() || story.ends_with("COMPLETE PASS"))
        return;
    const finished report = run({"report", runs.back()});
    EXPECT_TRUE(report.code == 3 ? report.out.find("\nINCOMPLETE  ") != report.out.npos
                                 : report.code == 2 && story.empty())
        << report;
}

static void kill_runs(unsigned seed)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    const words line = steps_line(folder, two_steps());
    const auto start_time = std::chrono::steady_clock::now();
    ASSERT_EQ(run(line).code, 0);
    const std::chrono::duration<double, std::micro> whole = std::chrono::steady_clock::now() - start_time;
    std::mt19937 random(seed);
    for (int round = 0; round < 10; round++) {
        std::filesystem::remove_all(folder + "/results");
        const double after_us = std::uniform_real_distribution<double>(0, whole.count())(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", killed after " + std::to_string(after_us) + " us");
        const running_station plan(line);
        usleep(static_cast<useconds_t>(after_us));
        kill(plan.pid, SIGKILL);
        wait_for(plan.pid);
        expect_record(read_to(plan.out, THE_END), folder);
    }
}

/* At several switches at once, as a run waits most of its time. */
TEST(plan_end, a_kill_loses_no_step)
{
    std::array<std::jthread, 5> switches;
    for (std::jthread &one : switches)
        one = std::jthread(kill_runs, std::random_device{}());
}
