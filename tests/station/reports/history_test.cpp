/* SPDX-License-Identifier: MIT
 *
 * What a folder of runs comes to.
 */
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "run_folders.h"
#include "station/reports/history.h"
#include "station/reports/report_tools.h"

/* A run of one step on a unit, at so many hours after the first. */
static void add_run(const run_folders &folder, const std::string &serial, int hour, const std::string &outcome,
                    double seconds = 10, const nlohmann::ordered_json &choice = nlohmann::ordered_json::object())
{
    journal_builder journal(serial, 4, hour, choice);
    if (outcome == "retry")
        journal.begin("poe", 1, 2).judge(2, "overload", "fail-retried", "once").whole("fail-retried", "");
    journal.begin("poe", outcome == "retry" ? 2 : 1, 2).wait(seconds);
    journal.judge(1, "overload", outcome == "fail" ? "fail" : "pass", outcome == "fail" ? "kept its power" : "");
    journal.whole(outcome == "fail" ? "fail" : "pass", "");
    if (outcome == "error")
        journal.end("ERROR", "NOT_APPLICABLE");
    else if (outcome != "cut off")
        journal.end("COMPLETE", outcome == "fail" ? "FAIL" : "PASS");
    journal.save(folder.path / fmt::format("{:03}-{}", 100 - hour, serial));
}

/* Folders sort against time, as they do when a clock is set: the journal counts. */
static void add_runs(const run_folders &folder)
{
    add_run(folder, "A", 0, "pass");
    add_run(folder, "B", 1, "error");
    add_run(folder, "B", 2, "retry", 40); /* B's first judged run */
    add_run(folder, "C", 3, "fail", 20);
    add_run(folder, "C", 4, "pass", 30);
    add_run(folder, "D", 5, "pass");
    add_run(folder, "D", 6, "fail");
    add_run(folder, "D", 7, "fail"); /* the same unit for the same reason */
    add_run(folder, "E", 8, "cut off");
}

TEST(History, CountsTheFirstAndTheLastJudgedRunOfEachUnit)
{
    const run_folders folder;
    add_runs(folder);
    std::filesystem::create_directory(folder.path / "no run");
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ(runs.listed.size(), 9U);
    EXPECT_EQ(runs.units, 5U);
    EXPECT_EQ(runs.by_result, (std::array<size_t, common::run_results>{4, 3, 1, 0, 0, 0, 1}));
    EXPECT_EQ(runs.judged_units, 4U);
    EXPECT_EQ(runs.passed_first, 3U);
    EXPECT_EQ(runs.passed_first_by_retry, 1U);
    EXPECT_EQ(runs.passed_last, 3U);
    ASSERT_EQ(runs.reasons.size(), 1U);
    EXPECT_EQ(runs.reasons[0].count.units, 2U);
    EXPECT_EQ(runs.reasons[0].count.runs, 3U);
    EXPECT_EQ(runs.reasons[0].example, "port 1: kept its power");
    EXPECT_EQ(runs.skipped, std::vector<std::string>{"no run"});

    const std::string text = reports::history_text(runs);
    for (const char *part : {"9 runs of 5 units: 4 PASS, 3 FAIL, 1 NO VERDICT, 1 INCOMPLETE\n",
                             "First-pass yield   75.0 %  3 of 4 units, 1 only by trying a step again\n",
                             "\n                  first run of each unit that came to a verdict\n",
                             "After all runs     75.0 %  3 of 4 units\n", "shortest 10 s, median 10 s, longest 40 s\n",
                             "    2     3  poe, overload\n             such as port 1: kept its power\n",
                             "    2     3  port 1: overload 3\n", "1 folder not a run: no run\n"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in\n" << text;
    const auto object = nlohmann::json::parse(reports::history_json(runs));
    EXPECT_EQ(object["first_pass"], (nlohmann::json{{"passed", 3}, {"of", 4}, {"percent", 75.0}, {"by_retry", 1}}));
    EXPECT_EQ(object["failures"][0]["check"], "overload");
    EXPECT_EQ(object["ports"][0]["where"], "port 1");
    EXPECT_EQ(object["ports"][0]["checks"][0], (nlohmann::json{{"check", "overload"}, {"units", 2}, {"runs", 3}}));
    EXPECT_EQ(object["run_list"].size(), 9U);
    EXPECT_EQ(object["run_list"][8]["verdict"], "PASS"); /* of the first hour */
}

/* A run that failed a port before it was given up, cut off, or ended by an error. */
static void add_broken_failure(const run_folders &folder, const std::string &serial, int hour,
                               const std::string &status)
{
    journal_builder journal(serial, 4, hour);
    journal.begin("poe").judge(1, "overload", "fail", "kept its power");
    if (!status.empty())
        journal.end_step(status).end(status, "NOT_APPLICABLE");
    journal.save(folder.path / fmt::format("{:03}-{}", 100 - hour, serial));
}

TEST(History, AFailureStaysOneWhateverEndsTheRun)
{
    const run_folders folder;
    add_broken_failure(folder, "A", 0, "SKIP");
    add_broken_failure(folder, "B", 1, "ERROR");
    add_broken_failure(folder, "C", 2, "");
    add_run(folder, "D", 3, "error"); /* failed nothing: says nothing */
    for (const char *serial : {"A", "B", "C", "D"})
        add_run(folder, serial, 4, "pass");
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ(runs.judged_units, 4U);
    EXPECT_EQ(runs.passed_first, 1U);
    EXPECT_EQ(runs.passed_last, 4U);
    EXPECT_EQ(runs.seconds.size(), 4U);
}

TEST(History, PartialRunsAreNoFirstAndNoLastRun)
{
    const run_folders folder;
    const nlohmann::ordered_json only{{"only", "poe"}}, skip{{"skip", "packet"}};
    add_run(folder, "A", 0, "fail", 10, only);
    add_run(folder, "A", 1, "pass");
    add_run(folder, "B", 2, "fail");
    add_run(folder, "B", 3, "pass", 1, skip);
    add_run(folder, "C", 4, "pass", 10, only);
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ(runs.listed.size(), 5U);
    EXPECT_EQ(runs.units, 3U);
    EXPECT_EQ(runs.partial, 3U);
    EXPECT_EQ(runs.judged_units, 2U);
    EXPECT_EQ(runs.passed_first, 1U);
    EXPECT_EQ(runs.passed_last, 1U);
    EXPECT_EQ(runs.seconds.size(), 2U);
    EXPECT_NE(reports::history_text(runs).find("\nPartial runs      3, "), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(reports::history_json(runs))["partial"], 3);
}

TEST(History, SaysWhenThereIsNothingToCount)
{
    const run_folders folder;
    EXPECT_EQ(reports::history_tool(folder.path, {}, false, reports::form::text), common::exit_code::nothing_run);
    EXPECT_EQ(reports::history_tool(folder.path / "nowhere", {}, false, reports::form::text), common::exit_code::usage);
    add_run(folder, "A", 0, "cut off");
    EXPECT_EQ(reports::history_tool(folder.path, {}, true, reports::form::json), common::exit_code::passed);
    const auto object = nlohmann::json::parse(reports::history_json(reports::read_history(folder.path)));
    EXPECT_FALSE(object.contains("first_pass")); /* no run was judged, so there is no yield */
}

TEST(History, CountsTheRunsThatAreAskedFor)
{
    const run_folders folder;
    add_run(folder, "A", 0, "fail");
    add_run(folder, "B", 24, "pass");
    add_run(folder, "", 25, "fail"); /* of no unit */
    const std::pair<reports::history_filter, size_t> filters[] = {
        {{}, 3},
        {{.plan = "final"}, 3},
        {{.plan = "fina"}, 0},
        {{.product = "SW-28P", .station = "FT-03"}, 3},
        {{.station = "FT-04"}, 0},
        {{.serial = "A"}, 1},
        {{.since = "2026-11-24"}, 2},
        {{.until = "2026-11-23"}, 1},
        {{.since = "2026-11-23", .until = "2026-11-24"}, 3},
    };
    for (const auto &[filter, count] : filters)
        EXPECT_EQ(reports::read_history(folder.path, filter).listed.size(), count) << filter.plan << filter.since;
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ(runs.units, 2U);
    EXPECT_EQ(runs.reasons[0].count.units, 1U);
    EXPECT_EQ(runs.ports[0].count.runs, 2U);
    EXPECT_NE(reports::runs_text(runs).find("\n2026-11-24T08:15:02  PASS                0  B, final, 076-B\n"),
              std::string::npos)
        << reports::runs_text(runs);
    for (const auto &[text, is_one] : {std::pair{"2026-02-28", true}, {"2026-02-30", false}, {"2026-2-3", false}})
        EXPECT_EQ(reports::is_day(text), is_one) << text;
}
