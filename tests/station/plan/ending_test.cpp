/* SPDX-License-Identifier: MIT
 *
 * Runs of plans that are cut short: nobody answers, somebody interrupts, the disk is full, the program is killed.
 */
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <regex>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

#include "bench.h"

static const words who{"--serial", "SW0001", "--operator", "O"};
static const std::string two_steps = plan_with("[[step]]\nrequest = \"factory-mode\"\nretries = 3\ntimeout_s = 1\n"
                                               "[[step]]\nrequest = \"poe\"\n");

/* A program with its outputs at the other end of pipes. */
struct running {
    int out, err; /* -1: closed */
    pid_t pid;
    running(const words &arguments)
    {
        int outs[2];
        int errs[2];
        EXPECT_EQ(pipe2(outs, O_CLOEXEC) + pipe2(errs, O_CLOEXEC), 0);
        out = outs[0];
        err = errs[0];
        pid = start(station(arguments), outs[1], errs[1]);
        close(outs[1]);
        close(errs[1]);
    }
    ~running()
    {
        close(out);
        close(err);
    }
    running(const running &) = delete;
};

/* Reads up to a text, or to the end. */
static std::string read_to(int fd, const std::string &text)
{
    std::string shown;
    for (char letter; shown.find(text) == std::string::npos && read(fd, &letter, 1) == 1;)
        shown += letter;
    return shown;
}
static const std::string the_end(1, '\0');

/* Takes the request of a station that waits for its reply. */
static int take_request(const listener &service)
{
    const int connection = accept4(service.fd, nullptr, nullptr, SOCK_CLOEXEC);
    char request[12]; /* of factory-mode */
    EXPECT_EQ(recv(connection, request, sizeof(request), MSG_WAITALL), ssize_t{sizeof(request)});
    return connection;
}

static void answer(int connection)
{
    const uint32_t reply[3] = {10, 4, 0};
    EXPECT_EQ(send(connection, reply, sizeof(reply), MSG_NOSIGNAL), ssize_t{sizeof(reply)});
}

static std::string with_timeout(std::string plan, const std::string &seconds)
{
    return plan.replace(plan.find("timeout_s = 1"), 13, "timeout_s = " + seconds);
}

static words with(const words &options)
{
    words all = who;
    all.insert(all.end(), options.begin(), options.end());
    return all;
}

TEST(plan_end, nobody_answers)
{
    const std::string skipped = " ERROR\npoe#1 the service did not answer an earlier step SKIP\nERROR NOT_APPLICABLE";
    for (const bool begun : {true, false}) {
        const temporary_folder folder;
        const listener silent(folder);
        const running plan(plan_line(folder.path, two_steps, with({"--busy-timeout", begun ? "3600" : "1"})));
        EXPECT_EQ(read_to(plan.out, "\n"), "test 1: serial SW0001, 2 steps, about 27 s expected\n"); /* at once */
        const int connection = begun ? take_request(silent) : -1;
        EXPECT_EQ(wait_for(plan.pid), 3);
        close(connection);
        EXPECT_EQ(only_story(folder.path), (begun ? "factory-mode#1 timeout" : "factory-mode#1 busy") + skipped);
    }
    EXPECT_EQ(run(plan_line(temporary_folder().path, two_steps, who)).code, 3);
}

TEST(plan_end, the_time_of_a_step_begins_when_the_service_does)
{
    const std::string one_step = plan_with("[[step]]\nrequest = \"factory-mode\"\ntimeout_s = 2\n");
    const std::string waiting = "waiting for the service: it is still at work for somebody else";
    const temporary_folder folder;
    const listener busy(folder);
    const running plan(plan_line(folder.path, one_step, who));
    EXPECT_EQ(read_to(plan.err, "\n"), "facmsg-station: plan: " + waiting + "\n"); /* after 2 s */
    const int connection = take_request(busy);
    answer(connection);
    EXPECT_EQ(wait_for(plan.pid), 0);
    close(connection);
    EXPECT_EQ(only_story(folder.path),
              "factory-mode#1 " + waiting + " the service has begun the request COMPLETE\nCOMPLETE PASS");
}

static int rounds()
{
    const char *wanted = std::getenv("FACMSG_INTERRUPTIONS"); /* of each kind */
    return wanted == nullptr ? 1 : std::atoi(wanted);
}

/* Interrupted as a time limit does it: the program, and its group. A terminal that closes takes the outputs with it. */
static void interrupt_twice(running &plan, int number, int again)
{
    if (number == SIGHUP) {
        close(std::exchange(plan.out, -1));
        close(std::exchange(plan.err, -1));
    }
    kill(plan.pid, number);
    kill(plan.pid, again);
}

TEST(plan_end, an_interruption_lets_the_request_end_or_gives_it_up)
{
    const std::pair<int, int> interruptions[] = {
        {SIGHUP, SIGHUP}, {SIGINT, SIGINT}, {SIGINT, SIGTERM}, {SIGQUIT, SIGQUIT}, {SIGTERM, SIGTERM}};
    for (int round = 0; round < rounds(); round++)
        for (const auto &[number, again] : interruptions)
            for (const bool answered : {true, false}) {
                const temporary_folder folder;
                const listener service(folder);
                running interrupted(
                    plan_line(folder.path, with_timeout(two_steps, "60"), with({"--grace", answered ? "60" : "0"})));
                const int connection = take_request(service);
                interrupt_twice(interrupted, number, again);
                if (answered && number != SIGHUP) {
                    EXPECT_NE(read_to(interrupted.err, "\n").find("waiting for factory-mode to end, at most 60 s"),
                              std::string::npos);
                }
                if (answered)
                    answer(connection);
                EXPECT_EQ(wait_for(interrupted.pid), 128 + number);
                close(connection);
                EXPECT_EQ(only_story(folder.path),
                          std::string(answered ? "factory-mode#1 COMPLETE\n"
                                               : "factory-mode#1 interrupted; the service goes on with the request "
                                                 "it has begun SKIP\n") +
                              "poe#1 the run was interrupted SKIP\nThe run was interrupted by SIG" +
                              sigabbrev_np(number) + ". SKIP NOT_APPLICABLE");
                for (const char *report : {"/junit.xml", "/results.csv", "/report.html"})
                    EXPECT_GT(std::filesystem::file_size(runs_in(folder.path).front() + report), 0u);
            }
}

TEST(plan_end, a_later_interruption_leaves_at_once)
{
    for (const int number : {SIGINT, SIGTERM}) {
        const temporary_folder folder;
        const listener service(folder);
        const running interrupted(plan_line(folder.path, with_timeout(two_steps, "60"), who));
        const int connection = take_request(service);
        kill(interrupted.pid, SIGINT);
        read_to(interrupted.err, "\n");
        usleep(600'000);
        kill(interrupted.pid, number);
        EXPECT_EQ(wait_for(interrupted.pid), 128 + number);
        close(connection);
        EXPECT_EQ(story_of(runs_in(folder.path).front()), "factory-mode#1");
    }
}

TEST(plan_end, nohup_lets_a_run_outlive_its_terminal)
{
    const temporary_folder folder;
    const listener service(folder);
    signal(SIGHUP, SIG_IGN); /* which a program inherits */
    const running deaf(plan_line(folder.path, plan_with("[[step]]\nrequest = \"factory-mode\""), who));
    signal(SIGHUP, SIG_DFL);
    const int connection = take_request(service);
    kill(deaf.pid, SIGHUP);
    answer(connection);
    EXPECT_EQ(wait_for(deaf.pid), 0);
    close(connection);
}

/* The lock is the process's: it ends when that is killed. */
TEST(plan_end, one_station_at_a_time)
{
    const temporary_folder folder;
    const listener service(folder);
    const words line = plan_line(folder.path, with_timeout(two_steps, "600"), who); /* longer than this lasts */
    const running first(line);
    const int connection = take_request(service);
    const std::string holder = "process " + std::to_string(first.pid) + ": plan test 1, serial number SW0001, since ";
    const std::string held = ": another station is at the service in directory '" + folder.path + "': " + holder;
    for (const words &second : {line, {"--directory", folder.path, "log-level", "0"}}) {
        const finished refused = run(second);
        EXPECT_EQ(refused.code, 3) << refused;
        EXPECT_NE(refused.err.find(held), std::string::npos) << refused;
        EXPECT_NE(refused.err.find(" UTC; --wait waits for its end\n"), std::string::npos) << refused;
    }
    EXPECT_EQ(runs_in(folder.path).size(), 1u);
    const running impatient({"--directory", folder.path, "packet", "--wait"});
    EXPECT_EQ(read_to(impatient.err, holder), "facmsg-station: packet: waiting for " + holder);
    kill(impatient.pid, SIGINT);
    EXPECT_EQ(wait_for(impatient.pid), 130);
    const running patient({"--directory", folder.path, "factory-mode", "--wait"});
    read_to(patient.err, holder);
    kill(first.pid, SIGKILL);
    wait_for(first.pid);
    close(connection);
    const int next = take_request(service);
    answer(next);
    EXPECT_EQ(wait_for(patient.pid), 0);
    close(next);
}

static void expect_not_saved(const finished &end)
{
    EXPECT_EQ(end.code, 4) << end;
    EXPECT_NE(end.out.find("RESULTS NOT SAVED"), std::string::npos) << end;
    EXPECT_EQ(end.out.find("\nPASS"), std::string::npos) << end;
}

TEST(plan_end, results_that_cannot_be_kept_are_never_a_pass)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    std::ofstream(folder + "/file") << "no folder";
    for (const std::string &results : {folder + "/file/below", std::string("/proc/none")}) {
        words options = who;
        options.insert(options.end(), {"--results", results});
        expect_not_saved(run(plan_line(folder, two_steps, options)));
    }
    if (geteuid() == 0) { /* root may write anywhere, somebody else may not */
        std::filesystem::permissions(folder, std::filesystem::perms{0755});
        expect_not_saved(run(plan_line(folder, two_steps, who), 65534));
    }
    EXPECT_TRUE(runs_in(folder).empty());
}

/* A limit on the size of files stands for a disk that fills up, at every stage of a run. */
TEST(plan_end, a_full_disk_is_never_a_pass)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const words line = plan_line(folder, two_steps, who);
    ASSERT_EQ(run(line).code, 0);
    const auto whole = std::filesystem::file_size(runs_in(folder).front() + "/journal.jsonl");
    for (const double part : {0.005, 0.05, 0.3, 0.7, 0.999, 1.001}) { /* at last only the reports find no room */
        const rlimit small{static_cast<rlim_t>(static_cast<double>(whole) * part), before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        int out[2];
        ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
        const pid_t pid = start(station(line), out[1], out[1]);
        setrlimit(RLIMIT_FSIZE, &before);
        close(out[1]);
        const std::string shown = read_to(out[0], the_end);
        close(out[0]);
        expect_not_saved({wait_for(pid), shown});
        EXPECT_NE(shown.find("cannot write "), std::string::npos) << shown;
    }
}

/* Every step that was said to have ended is in the journal, whenever the program is killed. */
TEST(plan_end, a_kill_loses_no_step)
{
    const simulated_switch healthy("healthy-28");
    const std::string folder = healthy.folder.path;
    const words line = plan_line(folder, two_steps, who);
    const auto start_time = std::chrono::steady_clock::now();
    ASSERT_EQ(run(line).code, 0);
    const std::chrono::duration<double, std::micro> whole = std::chrono::steady_clock::now() - start_time;
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> moment(0, whole.count());
    std::filesystem::remove_all(folder + "/results");
    for (int round = 0; round < 50; round++) {
        const double after_us = moment(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", killed after " + std::to_string(after_us) + " us");
        const running killed(line);
        usleep(static_cast<useconds_t>(after_us));
        kill(killed.pid, SIGKILL);
        wait_for(killed.pid);
        const std::string shown = read_to(killed.out, the_end);
        const std::vector<std::string> runs = runs_in(folder);
        const std::string story = runs.empty() ? "" : story_of(runs.back());
        const std::regex ended("step . of 2  ([a-z-]+)  PASS");
        for (std::sregex_iterator found(shown.begin(), shown.end(), ended), none; found != none; ++found)
            EXPECT_NE(story.find((*found)[1].str() + "#1 COMPLETE\n"), std::string::npos) << shown << story;
        if (!runs.empty() && !story.ends_with("COMPLETE PASS")) {
            const finished report = run({"report", runs.back()});
            EXPECT_TRUE((report.code == 3 && report.out.find("\nINCOMPLETE  ") != std::string::npos) ||
                        (report.code == 2 && story.empty()))
                << report;
        }
        std::filesystem::remove_all(folder + "/results");
    }
}
