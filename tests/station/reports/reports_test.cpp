/* SPDX-License-Identifier: MIT
 *
 * What each report says of a run, and that no run says it in another report's or program's words.
 */
#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "run_folders.h"
#include "station/journal/journal_text.h"
#include "station/reports/findings.h"
#include "station/reports/history.h"
#include "station/reports/panel.h"
#include "station/reports/port_state.h"
#include "station/reports/report_tools.h"
#include "station/reports/reports.h"
#include "station/reports/step_table.h"

using common::exit_code;

static pugi::xml_document junit_of(const journal_builder &journal)
{
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(reports::junit_text(record_of(journal)).c_str()));
    return document;
}

/* The elements within a case, such as "failure: No link."; "passed" when there is none. */
static std::string case_of(const pugi::xml_document &document, const std::string &class_name, const std::string &name)
{
    for (const auto &node : document.child("testsuites").child("testsuite").children("testcase"))
        if (class_name == node.attribute("classname").value() && name == node.attribute("name").value()) {
            std::string told;
            for (const auto &inner : node.children())
                told += std::string(inner.name()) + ": " + inner.text().get();
            return told.empty() ? "passed" : told;
        }
    return "no such case";
}

TEST(Junit, TellsTheUnitFromTheStation)
{
    const auto failed = junit_of(failing_run()), erred = junit_of(erring_run()),
               interrupted = junit_of(interrupted_run()), partial = junit_of(partial_run()),
               cut_off = junit_of(incomplete_run());
    EXPECT_EQ(case_of(failed, "packet.port13", "link"),
              "failure: No link at the last check; expected a link. No frame was sent.");
    EXPECT_EQ(case_of(failed, "packet.port20", "link"), "skipped: NOT TESTED: Another port refused its settings.");
    EXPECT_EQ(case_of(failed, "packet.port12", "link"), "passed");
    EXPECT_EQ(case_of(failed, "broadcast.port05", "fcs-errors"),
              "system-out: attempt 1: RETRIED: 9 FCS errors; expected at most 4.\n");
    EXPECT_EQ(case_of(failed, "broadcast.unit", "step"), "system-out: attempt 1: RETRIED: 1 port failed\n");
    EXPECT_EQ(case_of(failed, "broadcast.port06", "fcs-errors"), "passed");
    EXPECT_EQ(case_of(failed, "poe.unit", "step"), "failure: 1 port failed the PoE test.");
    EXPECT_EQ(case_of(erred, "poe.unit", "step"),
              "error: timeout: The service did not answer within 120 s; expected 26 s.");
    EXPECT_EQ(case_of(interrupted, "poe.unit", "step"), "skipped: NOT RUN: The run was interrupted.");
    EXPECT_EQ(case_of(interrupted, "run", "end"),
              "error: interrupted by SIGTERM; of 2 steps only 1 was run: this is not the whole plan");
    EXPECT_EQ(case_of(partial, "run", "whole plan"),
              "skipped: PARTIAL: of 3 steps only 1 was run: this is not the whole plan");
    EXPECT_EQ(case_of(cut_off, "run", "end"), "error: The journal has no end: the run was cut off. It is no pass.");
}

TEST(Junit, CountsAndNamesAgreeInEveryRun)
{
    journal_builder empty, says_nothing;
    says_nothing.begin("poe").whole("pass", "").end("COMPLETE", "FAIL");
    for (const journal_builder &journal : {passing_run(), failing_run(), erring_run(), interrupted_run(),
                                           incomplete_run(), hostile_run(), empty, says_nothing}) {
        const auto document = junit_of(journal);
        const auto suite = document.child("testsuites").child("testsuite");
        std::map<std::string, int> count{{"", 0}, {"failure", 0}, {"error", 0}, {"skipped", 0}};
        std::set<std::string> names;
        int cases = 0;
        for (const auto &node : suite.children("testcase")) {
            count[node.first_child().name()]++;
            names.insert(fmt::format("{}/{}", node.attribute("classname").value(), node.attribute("name").value()));
            cases++;
        }
        EXPECT_GT(cases, 0);
        EXPECT_EQ(names.size(), size_t(cases));
        EXPECT_EQ(suite.attribute("tests").as_int(), cases);
        EXPECT_EQ(suite.attribute("failures").as_int(), count["failure"]);
        EXPECT_EQ(suite.attribute("errors").as_int(), count["error"]);
        EXPECT_EQ(suite.attribute("skipped").as_int(), count["skipped"]);
        const auto run = record_of(journal);
        EXPECT_EQ(run.result == journal::run_result::fail, count["failure"] > 0) << journal.text();
        EXPECT_EQ(run.result >= journal::run_result::no_verdict && run.result != journal::run_result::partial &&
                      run.result != journal::run_result::unjudged,
                  count["error"] > 0);
        EXPECT_EQ(std::string(suite.attribute("time").value()).find_first_not_of("0123456789."), std::string::npos);
    }
}

TEST(Csv, QuotesWhatNeedsItAndArmsNoFormula)
{
    std::istringstream lines(reports::csv_text(record_of(hostile_run())));
    const char *start = "'=cmd|' /C calc'!A0,7c1e,<script>alert(1)</script>,1,";
    const std::vector<std::string> expected = {
        "serial,run_id,step,attempt,port,kind,name,value,unit,limits,verdict,message,time\r",
        fmt::format("{}1,measurement,'-2+3,\"'@SUM(1,2)\",,,,,2026", start),
        fmt::format("{}1,measurement,delta,-5,,,,,2026", start),
        fmt::format("{}1,diagnosis,\"a\"\"b,c\",,,,FAIL,\"[31mred ]]> & \"\"quoted\"\", line", start), "end \",2026"};
    for (const std::string &line : expected) {
        std::string found;
        std::getline(lines, found);
        EXPECT_EQ(found.substr(0, line.size()), line);
    }
    EXPECT_NE(reports::csv_text(record_of(failing_run())).find(",broadcast,2,5,measurement,fcs_errors,0,,<= 4,,,2026"),
              std::string::npos);
}

static std::string verdict_of(const journal_builder &journal, bool colour = false)
{
    return reports::verdict_text(record_of(journal), "results/run", colour);
}

TEST(Verdict, SaysWhatFailedAndWhere)
{
    struct {
        journal_builder journal;
        std::vector<std::string> parts;
    } const runs[] = {
        {passing_run(), {"\nPASS  serial SW28-0041"}},
        {failing_run(),
         {"\nFAIL  serial SW28-0042", "\n  port 7   poe, overload: The port kept", "\n  port 13  packet, link: No link",
          "passed only when tried again:\n  broadcast  passed in attempt 2 of 2"}},
        {erring_run(), {"\nNO VERDICT  ", "\n  poe  timeout: The service did not answer"}},
        {interrupted_run(),
         {"\nINTERRUPTED  ", "\n             interrupted by SIGTERM; of 2 steps only 1 was run: this is not",
          "\n  poe  The run was interrupted."}},
        {incomplete_run(), {"\nINCOMPLETE  ", "the run was cut off. It is no pass.", "\n  poe  The journal ends"}},
        {partial_run(),
         {"\nPARTIAL  serial SW28-0046, SW-28P\n         of 3 steps only 1 was run: this is not the whole plan\n",
          "not run or not finished:\n  broadcast  The operator left the step out.\n  poe "}},
        {hostile_run(), {"[31mred ]]> & \"quoted\", line end"}},
    };
    for (const auto &run : runs) {
        const std::string text = verdict_of(run.journal);
        for (const std::string &part : run.parts)
            EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in" << text;
        EXPECT_TRUE(text.ends_with("\nReport: results/run/report.html\n"));
        EXPECT_EQ(text.find('\033'), std::string::npos);
        for (const size_t columns : {80U, 40U}) {
            std::istringstream lines(reports::verdict_text(record_of(run.journal), "results/run", false, columns));
            for (std::string line; std::getline(lines, line);)
                EXPECT_LE(line.size(), columns) << line;
        }
    }
    EXPECT_EQ(verdict_of(passing_run()).find("failed"), std::string::npos);
    EXPECT_EQ(verdict_of(passing_run()).find("plan\n"), std::string::npos);
    EXPECT_NE(verdict_of(failing_run(), true).find("\033[1;31mFAIL\033[0m"), std::string::npos);
}

/* What stands under the result. */
static std::string headline_of(const journal_builder &journal)
{
    const std::string page = reports::html_text(record_of(journal));
    const std::string before = "</b><span>";
    const size_t begin = page.find(before) + before.size();
    return page.substr(begin, page.find("</span>", begin) - begin);
}

TEST(Html, SaysThatEveryStepPassedOnlyWhenItDid)
{
    journal_builder unjudged, retried, empty, partial("A", 4, 0, {{"skip", "packet,poe"}});
    unjudged.begin("poe").whole("pass", "").begin("trace").whole("unknown", "").leave_out("packet");
    retried.begin("poe", 1, 2).whole("fail-retried", "").begin("poe", 2, 2).whole("pass", "");
    partial.begin("broadcast").judge(1, "link", "fail", "No link.").whole("fail", "").leave_out("packet");
    const std::pair<journal_builder, const char *> runs[] = {
        {passing_run(), "every step passed"},
        {unjudged.end("COMPLETE", "PASS"), "1 of 3 steps passed, 1 NOT RUN, 1 NOT JUDGED"},
        {retried.end("COMPLETE", "PASS"), "after steps were tried again"},
        {empty.end("COMPLETE", "PASS"), "no step was run"},
        {partial_run(), "of 3 steps only 1 was run: this is not the whole plan"},
        {partial.end("COMPLETE", "FAIL"), "1 failed check; of 2 steps only 1 was run: this is not the whole plan"},
    };
    for (const auto &[journal, expected] : runs)
        EXPECT_EQ(headline_of(journal), expected);
}

TEST(Reports, NoneShowsADamagedPassAsAPass)
{
    const run_folders folder;
    const auto run_dir = passing_run().save(folder.path / "run");
    const std::string whole = journal::read_text(run_dir / journal::file_name);
    const auto lines = journal::lines_of(whole);
    std::ofstream(run_dir / journal::file_name) << lines[0].text << "\n"
                                                << lines[1].text << "\n"
                                                << lines.back().text << "\n";
    const journal::run_record run = journal::read_run(run_dir);
    const std::string sentence = "The journal ends with PASS, but is not valid: line 3: sequenceNumber is ";
    const auto plain = [](std::string shown) {
        for (size_t at = 0; (at = shown.find("\n  ", at)) != std::string::npos;)
            shown.replace(at, shown.find_first_not_of(" \n", at) - at, " ");
        return shown;
    };
    const std::string verdict = reports::verdict_text(run, run_dir, false);
    EXPECT_NE(verdict.find("\nNO VERDICT  "), std::string::npos);
    EXPECT_NE(plain(verdict).find(sentence), std::string::npos) << verdict;
    EXPECT_NE(reports::junit_text(run).find(sentence), std::string::npos);
    EXPECT_NE(reports::html_text(run).find(sentence), std::string::npos);
    EXPECT_EQ(reports::read_history(folder.path).passed_first, 0U);
    EXPECT_EQ(reports::report_tool(run_dir, reports::form::text), exit_code::no_verdict);
}

TEST(PortState, SaysWhatIsKnownAndWhatIsMissing)
{
    journal_builder unfinished_retry("A", 4);
    unfinished_retry.begin("poe", 1, 2, 4).judge(1, "link", "fail-retried", "No link.").judge(2, "link", "pass");
    unfinished_retry.whole("fail-retried", "").begin("poe", 2, 2, 4).end_step("SKIP").end("SKIP", "NOT_APPLICABLE");
    journal_builder unjudged("A", 4);
    unjudged.begin("vop").judge(1, "vop", "unknown").judge(1, "limit", "pass").judge(2, "vop", "unknown");
    unjudged.whole("pass", "").end("COMPLETE", "PASS");
    journal_builder unnamed("A", 4);
    unnamed.begin("poe").judge(1, "link", "pass").whole("pass", "");
    unnamed.begin("broadcast").whole("fail", "No link.").end("COMPLETE", "FAIL");
    struct {
        journal_builder journal;
        size_t port;
        const char *expected;
    } const ports[] = {
        {failing_run(), 1, "PASS: Passed all that the plan asks of it."},
        {failing_run(), 5, "RETRIED: broadcast, fcs-errors: 9 FCS errors; expected at most 4."},
        {failing_run(), 13, "FAIL: packet, link: No link at the last check; expected a link. No frame was sent."},
        {failing_run(), 20, "PASSED SO FAR: Passed broadcast, poe. Missing: packet (NOT TESTED)."},
        {interrupted_run(), 24, "PASSED SO FAR: Passed packet. Missing: poe (NOT RUN)."},
        {interrupted_run(), 25, "PASS: Passed all that the plan asks of it."}, /* poe does not cover it */
        {erring_run(), 28, "PASSED SO FAR: Passed packet. Missing: poe (NO VERDICT)."},
        {partial_run(), 1, "PASSED SO FAR: Passed packet. Missing: broadcast (NOT RUN), poe (NOT RUN)."},
        {incomplete_run(), 9,
         "PASSED SO FAR: Passed packet. Missing: poe (INCOMPLETE), the rest of the plan (INCOMPLETE)."},
        {unfinished_retry, 1, "RETRIED: poe, link: No link. Missing: poe (NOT RUN)."},
        {unfinished_retry, 3, "–: Missing: poe (NOT RUN)."},
        {unjudged, 1, "PASS: Passed all that the plan asks of it."},
        {unjudged, 2, "–: No step judges it."},
        {unnamed, 1, "PASSED SO FAR: Passed poe. Missing: broadcast (FAIL as a whole)."},
        {unnamed, 2, "–: Missing: broadcast (FAIL as a whole)."},
    };
    for (const auto &[journal, port, expected] : ports) {
        const auto found = reports::ports_of(record_of(journal)).at(port - 1);
        EXPECT_EQ(fmt::format("{}: {}", word_of(found.state), found.sentence), expected) << port;
    }
    const auto missing = reports::missing_in(reports::ports_of(record_of(interrupted_run())));
    ASSERT_EQ(missing.size(), 1U);
    EXPECT_EQ(missing[0].ports, "ports 1-24");
}

TEST(Panel, OddPortsStandAboveEvenOnes)
{
    const journal::run_record run = record_of(passing_run());
    const auto ports = reports::ports_of(run);
    const auto groups = reports::lay_out(ports);
    ASSERT_EQ(groups.size(), 2U);
    ASSERT_EQ(groups[0].blocks.size(), 2U);
    std::string shown;
    for (const auto &port : groups[0].blocks[1].ports)
        shown += fmt::format("{}:{}/{} ", port.found->port.port, port.column, port.row);
    EXPECT_EQ(shown, "13:0/0 14:0/1 15:1/0 16:1/1 17:2/0 18:2/1 19:3/0 20:3/1 21:4/0 22:4/1 23:5/0 24:5/1 ");
    EXPECT_EQ(groups[1].name, "SFP+");
    EXPECT_EQ(groups[1].blocks[0].rows, 1);
    EXPECT_EQ(groups[1].blocks[0].columns, 4);
}

TEST(StepTable, APortThatIsTestedTwiceHasTwoRows)
{
    journal_builder journal;
    journal.begin("hpoe");
    for (const char *outcome : {"pass", "fail"})
        for (const int port : {3, 4})
            journal.measure(port, "class", 4).judge(port, "state", outcome, outcome).judge(port, "overload", "pass");
    const journal::run_record run = record_of(journal.whole("fail", "").end("COMPLETE", "FAIL"));
    const auto table = reports::table_of(run.attempts[0]);
    std::string shown;
    for (const auto &row : table.rows)
        shown += fmt::format("{} {} {}; ", row.where.name, word_of(row.verdict), row.reason);
    EXPECT_EQ(shown, "port 3 PASS pass; port 4 PASS pass; port 3 FAIL fail; port 4 FAIL fail; ");
    EXPECT_EQ(table.columns.size(), 3U);
}

TEST(ReportTool, WritesTheReportsAndAnswersWithTheVerdict)
{
    const run_folders folder;
    const std::pair<journal_builder, exit_code> runs[] = {
        {passing_run(), exit_code::passed},    {failing_run(), exit_code::failed},
        {erring_run(), exit_code::no_verdict}, {interrupted_run(), exit_code::terminated},
        {partial_run(), exit_code::partial},   {incomplete_run(), exit_code::no_verdict}};
    for (const auto &[journal, code] : runs)
        EXPECT_EQ(reports::report_tool(journal.save(folder.path / "run"), reports::form::text), code);
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path / "run"))
        names.insert(entry.path().filename());
    EXPECT_EQ(names, (std::set<std::string>{journal::file_name, "junit.xml", "report.html", "results.csv"}));
    EXPECT_EQ(reports::report_tool(folder.path, reports::form::text), exit_code::usage);
    std::filesystem::remove(folder.path / "run" / "report.html");
    std::filesystem::create_directories(folder.path / "run" / "report.html" / "in the way");
    testing::internal::CaptureStdout();
    EXPECT_EQ(reports::report_tool(folder.path / "run", reports::form::text), exit_code::not_saved);
    const std::string shown = testing::internal::GetCapturedStdout();
    EXPECT_EQ(shown.find("RESULTS NOT SAVED  "), 0U) << shown; /* in place of the verdict */
    EXPECT_EQ(shown.find("INCOMPLETE"), std::string::npos) << shown;
    testing::internal::CaptureStdout();
    EXPECT_EQ(reports::report_tool(folder.path / "run", reports::form::json), exit_code::not_saved);
    const auto told = nlohmann::json::parse(testing::internal::GetCapturedStdout());
    EXPECT_EQ(told["verdict"], "INCOMPLETE");
    EXPECT_EQ(told["exit_code"], 4);
    EXPECT_EQ(told["error"].get<std::string>().find("cannot write "), 0U) << told;
    EXPECT_FALSE(std::filesystem::exists(folder.path / "run" / "report.html.unfinished"));
}

static nlohmann::json printed_by(const auto &tool, exit_code code)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(tool(), code);
    return nlohmann::json::parse(testing::internal::GetCapturedStdout());
}

TEST(Tools, PrintOneJsonObject)
{
    using reports::form;
    const run_folders folder;
    const auto run_dir = failing_run().save(folder.path / "run");
    const auto run = printed_by([&] { return reports::report_tool(run_dir, form::json); }, exit_code::failed);
    EXPECT_EQ(run["verdict"], "FAIL");
    EXPECT_EQ(run["exit_code"], 1);
    EXPECT_EQ(run["run_dir"], run_dir.string());
    EXPECT_EQ(run["whole_plan"], true);
    EXPECT_EQ(run["failures"].size(), 2U);
    EXPECT_EQ(run["failures"][0]["port"], 7);
    EXPECT_EQ(run["failures"][0]["sentence"], "The port kept its power under overload; expected it to switch off.");
    EXPECT_EQ(run["steps"].size(), 3U); /* the last attempt at each */
    const auto file = run_dir / journal::file_name;
    EXPECT_EQ(printed_by([&] { return reports::check_tool(file, form::json); }, exit_code::passed)["valid"], true);
    std::ofstream(file, std::ios::app) << "{";
    const auto found = printed_by([&] { return reports::check_tool(file, form::json); }, exit_code::failed);
    EXPECT_EQ(found["problems"][0]["line"], found["lines"]);
    EXPECT_EQ(printed_by([&] { return reports::report_tool(folder.path, form::json); }, exit_code::usage)["exit_code"],
              2);
}

TEST(CheckTool, PrintsOneLineForEachProblem)
{
    const run_folders folder;
    const auto file = failing_run().save(folder.path) / journal::file_name;
    testing::internal::CaptureStdout();
    EXPECT_EQ(reports::check_tool(file, reports::form::text), exit_code::passed);
    const std::string valid = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(valid.ends_with("lines, valid\n")) << valid;
    std::ofstream(file, std::ios::app) << "{";
    testing::internal::CaptureStdout();
    EXPECT_EQ(reports::check_tool(file, reports::form::text), exit_code::failed);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(": the line has no line end, so it may not be whole\n"),
              std::string::npos);
    EXPECT_EQ(reports::check_tool(folder.path, reports::form::text), exit_code::usage);
}
