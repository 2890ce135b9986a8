/* SPDX-License-Identifier: MIT
 *
 * What a folder of runs comes to.
 */
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "sample_runs.h"
#include "station/reports/history.h"
#include "station/reports/reports.h"

using common::exit_code;

constexpr const char *PASSED = "step poe | wait 10 | 1 overload-pass | over pass | end PASS";
constexpr const char *FAILED = "step poe | wait 20 | 1 overload-fail kept its power | over fail | end FAIL";
constexpr const char *RETRIED =
    "step poe 1/2 | 2 overload-fail-retried once | over fail-retried | step poe 2/2 | wait 40 | "
    "1 overload-pass | over pass | end PASS";

/* Folders sort against time, as they do when a clock is set: the journal counts. */
struct past_runs : run_folders {
    int hour = 0;
    void add(const std::string &serial, const std::string &story)
    {
        write_run(path / fmt::format("{:03}-{}", 100 - hour, serial),
                  fmt::format("serial={} | hour={} | {}", serial, hour, story));
        hour++;
    }
};

TEST(history, counts_the_first_and_the_last_judged_run_of_each_unit)
{
    past_runs folder;
    folder.add("A", PASSED);
    folder.add("B", "step poe | error busy x | end ERROR");
    folder.add("B", RETRIED); /* B's first judged run */
    folder.add("C", FAILED);
    folder.add("C", PASSED);
    folder.add("D", PASSED);
    folder.add("D", FAILED);
    folder.add("D", std::string(FAILED) + " | step vop"); /* the same unit for the same reason */
    folder.add("E", "step poe");
    folder.add("", "step vop | 3 vop-fail too low | 3 limit-fail | over fail | end FAIL"); /* of no unit */
    std::filesystem::create_directory(folder.path / "no run");
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ("\n" + reports::history_text(runs), R"(
10 runs of 5 units: 4 PASS, 4 FAIL, 1 NO VERDICT, 1 INCOMPLETE

First-pass yield   75.0 %  3 of 4 units, 1 only by trying a step again
                  first run of each unit that came to a verdict
After all runs     75.0 %  3 of 4 units
Time of a run     shortest 0.0 s, median 15 s, longest 40 s

Why units fail
units  runs  step, check
    2     3  poe, overload
             such as port 1: kept its power
    0     1  vop, limit
             such as port 3: No reason is given.
    0     1  vop, vop
             such as port 3: too low

Which ports fail
units  runs  port, and the checks with their runs
    2     3  port 1: overload 3
    0     1  port 3: limit 1, vop 1

1 folder not a run: no run
)");
    auto object = nlohmann::ordered_json::parse(reports::history_json(runs));
    EXPECT_EQ(object["run_list"].size(), 10U);
    EXPECT_EQ(
        object["run_list"][9].dump(),
        R"({"folder":"100-A","started":"2026-11-23T08:15:02.118Z","serial":"A","plan":"final","product":"SW-28P","station":"FT-03","verdict":"PASS","partial":false,"failures":0,"seconds":10.012})"); /* of the first hour */
    object.erase("run_list");
    EXPECT_EQ(
        object.dump(),
        R"({"runs":10,"units":5,"partial":0,"results":{"PASS":4,"FAIL":4,"NO VERDICT":1,"INTERRUPTED":0,"PARTIAL":0,"NOT JUDGED":0,"INCOMPLETE":1},"first_pass":{"passed":3,"of":4,"percent":75.0,"by_retry":1},"after_all_runs":{"passed":3,"of":4,"percent":75.0},"seconds":{"shortest":0.014,"median":15.012,"longest":40.022},"failures":[{"step":"poe","check":"overload","units":2,"runs":3,"example":"port 1: kept its power"},{"step":"vop","check":"limit","units":0,"runs":1,"example":"port 3: No reason is given."},{"step":"vop","check":"vop","units":0,"runs":1,"example":"port 3: too low"}],"ports":[{"where":"port 1","units":2,"runs":3,"checks":[{"check":"overload","units":2,"runs":3}]},{"where":"port 3","units":0,"runs":1,"checks":[{"check":"limit","units":0,"runs":1},{"check":"vop","units":0,"runs":1}]}],"skipped":["no run"]})");
    EXPECT_EQ(reports::runs_text(runs).substr(0, 150),
              R"(started (UTC)        result       failures  serial, plan, folder
2026-11-23T17:15:02  FAIL                2  -, final, 091-
2026-11-23T16:15:02  INCOM)");
}

/* A failure stays one whatever ends the run; who failed nothing says nothing; partial runs are no first and no last. */
TEST(history, counts_the_runs_that_say_something_of_a_unit)
{
    for (const auto &row : read_rows(HISTORIES)) {
        past_runs folder;
        for (size_t i = 1; i < row.size(); i++)
            folder.add(row[i].substr(0, 1), row[i].substr(2));
        const auto runs = reports::read_history(folder.path);
        const std::string counts =
            fmt::format("{} {} {} {} ", runs.judged_units, runs.first_passes, runs.final_passes, runs.seconds.size());
        EXPECT_EQ(counts, row[0].substr(0, counts.size()));
        EXPECT_NE(reports::history_text(runs).find("\n" + row[0].substr(counts.size())), std::string::npos) << row[0];
        EXPECT_EQ(nlohmann::json::parse(reports::history_json(runs)).contains("first_pass"), runs.judged_units > 0);
    }
}

TEST(history, says_when_there_is_nothing_to_count)
{
    past_runs folder;
    using reports::form, reports::history_tool;
    EXPECT_EQ(history_tool(folder.path, {}, false, form::text), exit_code::nothing_run);
    EXPECT_EQ(history_tool(folder.path / "nowhere", {}, false, form::text), exit_code::usage);
    folder.add("A", "step poe");
    EXPECT_EQ(history_tool(folder.path, {}, true, form::json), exit_code::passed);
}

TEST(history, counts_the_runs_of_the_filter)
{
    past_runs folder;
    folder.add("A", FAILED);
    folder.hour = 24;
    folder.add("B", PASSED);
    folder.add("", FAILED);
    const std::pair<reports::history_filter, size_t> filters[] = {{{}, 3},
                                                                  {{.plan = "final"}, 3},
                                                                  {{.plan = "fina"}, 0},
                                                                  {{.product = "SW-28P", .station = "FT-03"}, 3},
                                                                  {{.product = "SW"}, 0},
                                                                  {{.station = "FT-04"}, 0},
                                                                  {{.serial = "A"}, 1},
                                                                  {{.since = "2026-11-24"}, 2},
                                                                  {{.until = "2026-11-23"}, 1},
                                                                  {{.since = "2026-11-23", .until = "2026-11-24"}, 3}};
    for (const auto &[filter, count] : filters)
        EXPECT_EQ(reports::read_history(folder.path, filter).list.size(), count) << filter.plan << filter.since;
    for (const auto &[text, is_one] : {std::pair{"2026-02-28", true}, {"2026-02-30", false}, {"2026-2-3", false}})
        EXPECT_EQ(reports::is_day(text), is_one) << text;
}
