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

#include "bench.h"

static const words who{"--serial", "SW0001", "--operator", "O"};
static const std::string two_steps = plan_with("[[step]]\nrequest = \"factory-mode\"\nretries = 3\ntimeout_s = 1\n"
                                               "[[step]]\nrequest = \"poe\"\n");

/* A program with its outputs at the other end of pipes. */
struct running {
    int out, err;
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

TEST(plan_end, nobody_answers)
{
    const temporary_folder folder;
    const listener silent(folder);
    const running plan(plan_line(folder.path, two_steps, who));
    EXPECT_EQ(read_to(plan.out, "\n"), "test 1: serial SW0001, 2 steps, about 27 s expected\n"); /* before the reply */
    EXPECT_EQ(wait_for(plan.pid), 3);
    EXPECT_EQ(only_story(folder.path), "factory-mode#1 timeout ERROR\npoe#1 the service did not answer an earlier "
                                       "step SKIP\nERROR NOT_APPLICABLE");
    EXPECT_EQ(run(plan_line(temporary_folder().path, two_steps, who)).code, 3);
}

/* Takes the request of a station that waits for its reply. */
static int take_request(const listener &service)
{
    const int connection = accept4(service.fd, nullptr, nullptr, SOCK_CLOEXEC);
    char request[12]; /* of factory-mode */
    EXPECT_EQ(recv(connection, request, sizeof(request), MSG_WAITALL), ssize_t{sizeof(request)});
    return connection;
}

TEST(plan_end, an_interruption_lets_the_request_end_or_gives_it_up)
{
    for (const int number : {SIGINT, SIGTERM})
        for (const bool answered : {true, false}) {
            const temporary_folder folder;
            const listener service(folder);
            words options = who;
            options.insert(options.end(), {"--grace", answered ? "60" : "0"});
            std::string plan = two_steps;
            plan.replace(plan.find("timeout_s = 1"), 13, "timeout_s = 60");
            const running interrupted(plan_line(folder.path, plan, options));
            const int connection = take_request(service);
            kill(interrupted.pid, number);
            if (answered) {
                EXPECT_NE(read_to(interrupted.err, "\n").find("waiting for factory-mode to end, at most 60 s"),
                          std::string::npos);
                const uint32_t reply[3] = {10, 4, 0};
                EXPECT_EQ(send(connection, reply, sizeof(reply), MSG_NOSIGNAL), ssize_t{sizeof(reply)});
            }
            EXPECT_EQ(wait_for(interrupted.pid), 128 + number);
            close(connection);
            const std::string skipped =
                std::string("poe#1 the run was interrupted SKIP\nThe run was interrupted by SIG") +
                (number == SIGINT ? "INT" : "TERM") + ". SKIP NOT_APPLICABLE";
            EXPECT_EQ(only_story(folder.path),
                      (answered ? "factory-mode#1 COMPLETE\n"
                                : "factory-mode#1 no reply was waited for any longer: the run was interrupted SKIP\n") +
                          skipped);
        }
}

TEST(plan_end, a_second_interruption_leaves_at_once)
{
    for (const int number : {SIGINT, SIGTERM}) {
        const temporary_folder folder;
        const listener service(folder);
        std::string plan = two_steps;
        plan.replace(plan.find("timeout_s = 1"), 13, "timeout_s = 60");
        const running interrupted(plan_line(folder.path, plan, who));
        const int connection = take_request(service);
        kill(interrupted.pid, SIGINT);
        read_to(interrupted.err, "\n");
        kill(interrupted.pid, number);
        EXPECT_EQ(wait_for(interrupted.pid), 128 + number);
        close(connection);
        EXPECT_EQ(story_of(runs_in(folder.path).front()), "factory-mode#1");
    }
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
    for (const std::string &results : {folder + "/file", std::string("/proc/none")}) {
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
