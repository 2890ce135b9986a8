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

namespace
{

using common::exit_code;

const std::string passed = "step poe | wait 10 | 1 overload-pass | over pass | end PASS";
const std::string failed = "step poe | wait 20 | 1 overload-fail kept its power | over fail | end FAIL";
const std::string retried =
    "step poe 1/2 | 2 overload-fail-retried once | over fail-retried | step poe 2/2 | wait 40 | "
    "1 overload-pass | over pass | end PASS";
const std::string no_verdict = "step poe | error busy x | end ERROR";

/* Folders sort against time, as they do when a clock is set: the journal counts. */
struct past_runs : run_folders {
    int hour = 0;
    void add(const std::string &serial, const std::string &story)
    {
        write_run(path / fmt::format("{:03}-{}", 100 - hour, serial),
                  fmt::format("serial={} | hour={} | {}", serial, hour, story));
        ++hour;
    }
};

TEST(history, counts_the_first_and_the_last_judged_run_of_each_unit)
{
    past_runs folder;
    folder.add("A", passed);
    folder.add("B", no_verdict);
    folder.add("B", retried); /* B's first judged run */
    folder.add("C", failed);
    folder.add("C", passed);
    folder.add("D", passed);
    folder.add("D", failed);
    folder.add("D", failed + " | step vop"); /* the same unit for the same reason */
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

TEST(history, a_failure_stays_one_whatever_ends_the_run)
{
    past_runs folder;
    const std::string failure = "step poe | 1 overload-fail kept its power";
    folder.add("A", failure + " | left x | end SKIP");
    folder.add("B", failure + " | error busy x | end ERROR");
    folder.add("C", failure);
    folder.add("D", no_verdict); /* failed nothing: says nothing */
    for (const char *serial : {"A", "B", "C", "D"})
        folder.add(serial, passed);
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ(runs.judged_units, 4U);
    EXPECT_EQ(runs.passed_first, 1U);
    EXPECT_EQ(runs.passed_last, 4U);
    EXPECT_EQ(runs.seconds.size(), 4U);
}

TEST(history, partial_runs_are_no_first_and_no_last_run)
{
    past_runs folder;
    folder.add("A", "only=poe | " + failed);
    folder.add("A", passed);
    folder.add("B", failed);
    folder.add("B", "skip=packet | " + passed);
    folder.add("C", "only=poe | " + passed);
    const auto runs = reports::read_history(folder.path);
    EXPECT_EQ(runs.judged_units, 2U);
    EXPECT_EQ(runs.passed_first, 1U);
    EXPECT_EQ(runs.passed_last, 1U);
    EXPECT_EQ(runs.seconds.size(), 2U);
    EXPECT_NE(reports::history_text(runs).find("5 runs of 3 units: "), std::string::npos);
    EXPECT_NE(reports::history_text(runs).find("\nPartial runs      3, "), std::string::npos);
}

TEST(history, says_when_there_is_nothing_to_count)
{
    past_runs folder;
    using reports::form, reports::history_tool;
    EXPECT_EQ(history_tool(folder.path, {}, false, form::text), exit_code::nothing_run);
    EXPECT_EQ(history_tool(folder.path / "nowhere", {}, false, form::text), exit_code::usage);
    folder.add("A", "step poe");
    EXPECT_EQ(history_tool(folder.path, {}, true, form::json), exit_code::passed);
    const auto runs = reports::read_history(folder.path);
    EXPECT_NE(reports::history_text(runs).find("\nFirst-pass yield  -  no run"), std::string::npos);
    EXPECT_FALSE(nlohmann::json::parse(reports::history_json(runs)).contains("first_pass"));
}

TEST(history, counts_the_runs_that_are_asked_for)
{
    past_runs folder;
    folder.add("A", failed);
    folder.hour = 24;
    folder.add("B", passed);
    folder.add("", failed);
    const std::pair<reports::history_filter, size_t> filters[] = {
        {{}, 3},
        {{.plan = "final"}, 3},
        {{.plan = "fina"}, 0},
        {{.product = "SW-28P", .station = "FT-03"}, 3},
        {{.product = "SW"}, 0},
        {{.station = "FT-04"}, 0},
        {{.serial = "A"}, 1},
        {{.since = "2026-11-24"}, 2},
        {{.until = "2026-11-23"}, 1},
        {{.since = "2026-11-23", .until = "2026-11-24"}, 3},
    };
    for (const auto &[filter, count] : filters)
        EXPECT_EQ(reports::read_history(folder.path, filter).listed.size(), count) << filter.plan << filter.since;
    for (const auto &[text, is_one] : {std::pair{"2026-02-28", true}, {"2026-02-30", false}, {"2026-2-3", false}})
        EXPECT_EQ(reports::is_day(text), is_one) << text;
}

} // namespace
