/* SPDX-License-Identifier: MIT
 *
 * What a journal says arrives in the record, and no file can do the reader harm.
 */
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

#include "journal_builder.h"
#include "station/journal/journal_text.h"
#include "station/journal/run_record.h"

using journal::run_record;
using journal::run_result;
using journal::verdict;

/* A run folder for as long as a test runs. */
struct run_folder {
    std::filesystem::path path;
    run_folder()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "run record XXXXXX";
        path = mkdtemp(pattern.data());
    }
    ~run_folder()
    {
        std::filesystem::remove_all(path);
    }
    run_record read(const std::string &text) const
    {
        std::ofstream(path / journal::file_name) << text;
        return journal::read_run(path);
    }
    std::string refused(const std::string &text) const
    {
        try {
            read(text);
            return "";
        } catch (const journal::no_journal &why) {
            return std::string(why.what()).substr((path / journal::file_name).string().size());
        }
    }
};

TEST(RunRecord, HoldsWhatTheJournalSays)
{
    journal_builder journal("SW28-0042", 28);
    journal.begin("poe", 1, 2).wait(2.5).measure(7, "code", 3, 2).judge(7, "overload", "fail-retried", "too much");
    journal.judge(8, "overload", "not-tested", "not its turn").whole("fail-retried", "1 port failed");
    journal.begin("poe", 2, 2).judge(7, "overload", "pass").whole("pass", "all passed");
    journal.begin("trace").whole("unknown", "done");
    const run_record run = run_folder().read(journal.end("COMPLETE", "PASS").text());

    EXPECT_EQ(run.result, run_result::pass);
    EXPECT_EQ(run.serial + " " + run.product + " " + run.operator_name + " " + run.station + " " + run.run_id + " " +
                  run.plan + " " + run.version + " " + run.plan_file,
              "SW28-0042 SW-28P 0042 FT-03 7c1e final 1.4 plans/final.toml");
    ASSERT_EQ(run.ports.size(), 28U);
    EXPECT_EQ(run.ports[24].id + " " + run.ports[24].name + " " + run.ports[24].group, "port25 port 25 SFP+");
    ASSERT_EQ(run.attempts.size(), 3U);
    const journal::attempt &first = run.attempts[0];
    EXPECT_EQ(first.verdict, verdict::retried);
    EXPECT_FALSE(first.is_last);
    EXPECT_EQ(first.most, 2);
    EXPECT_EQ(first.summary, "1 port failed");
    EXPECT_NEAR(seconds_between(first.start, first.end).value_or(0), 2.5, 0.1);
    ASSERT_EQ(first.checks.size(), 3U);
    EXPECT_EQ(first.checks[0].value.text() + first.checks[0].limits.at(0).value.text(), "32");
    EXPECT_EQ(first.checks[1].verdict, verdict::retried);
    EXPECT_EQ(first.checks[1].sentence, "too much");
    EXPECT_EQ(first.checks[2].verdict, verdict::not_tested);
    EXPECT_TRUE(passed_by_retry(run.attempts[1]));
    EXPECT_EQ(run.attempts[2].verdict, verdict::unjudged);
}

TEST(RunRecord, TheResultIsThatOfTheLastLine)
{
    struct {
        const char *status, *result;
        run_result expected;
    } const ends[] = {{"COMPLETE", "PASS", run_result::pass},
                      {"COMPLETE", "FAIL", run_result::fail},
                      {"ERROR", "NOT_APPLICABLE", run_result::no_verdict},
                      {"SKIP", "NOT_APPLICABLE", run_result::unjudged},
                      {"ERROR", "PASS", run_result::no_verdict},
                      {"COMPLETE", "NOT_APPLICABLE", run_result::no_verdict}};
    const run_folder folder;
    for (const auto &end : ends)
        EXPECT_EQ(folder.read(journal_builder().end(end.status, end.result).text()).result, end.expected)
            << end.status << " " << end.result;
    const std::string whole = journal_builder().begin("poe").whole("pass", "").end("COMPLETE", "PASS").text();
    for (size_t cut = 1; cut < whole.size(); cut += 17)
        ASSERT_EQ(folder.read(whole.substr(0, whole.size() - cut)).result, run_result::incomplete) << cut;
}

TEST(RunRecord, APassThatTheStepsContradictIsAnError)
{
    const run_folder folder;
    journal_builder failed, cut_off;
    failed.begin("poe").judge(1, "overload", "fail", "bad").whole("pass", "").end("COMPLETE", "PASS");
    cut_off.begin("poe").end("COMPLETE", "PASS");
    EXPECT_EQ(folder.read(failed.text()).errors.at(0).message, "The journal ends with PASS, but its step poe is FAIL.");
    EXPECT_EQ(folder.read(cut_off.text()).result, run_result::no_verdict);
}

/* The journal without the lines from one to another, which are counted from 1. */
static std::string without_lines(const std::string &text, size_t first, size_t last)
{
    std::string left;
    for (const journal::text_line &line : journal::lines_of(text))
        if (line.number < first || line.number > last)
            left += std::string(line.text) + "\n";
    return left;
}

TEST(RunRecord, APassFromWhichLinesAreMissingIsAnError)
{
    const run_folder folder;
    journal_builder journal;
    journal.begin("poe").judge(1, "overload", "pass").whole("pass", "").begin("packet").whole("pass", "");
    const std::string whole = journal.end("COMPLETE", "PASS").text();
    const size_t count = journal::lines_of(whole).size();
    ASSERT_EQ(folder.read(whole).result, run_result::pass);
    for (size_t first = 2; first < count; first++)
        for (size_t last = first; last < count; last++) {
            const run_record run = folder.read(without_lines(whole, first, last));
            EXPECT_EQ(run.result, run_result::no_verdict) << first << " to " << last;
            EXPECT_EQ(run.errors.size(), 1U);
        }
    EXPECT_EQ(folder.read(without_lines(whole, 3, count - 1)).errors.at(0).message,
              "The journal ends with PASS, but is not valid: line 3: sequenceNumber is 11; expected 2.");
    EXPECT_EQ(folder.read(whole + "{").result, run_result::no_verdict); /* something was written after the end */
}

TEST(RunRecord, LinesThatFailedCannotBeTakenOutForAPass)
{
    const run_folder folder;
    journal_builder journal;
    journal.begin("poe").judge(1, "overload", "pass").judge(2, "overload", "fail", "kept its power");
    const std::string whole = journal.whole("fail", "1 port").end("COMPLETE", "PASS").text();
    EXPECT_EQ(folder.read(without_lines(whole, 6, 7)).errors.at(0).message,
              "The journal ends with PASS, but is not valid: line 6: sequenceNumber is 7; expected 5.");
    const std::string failed = journal_builder().begin("poe").whole("fail", "").end("COMPLETE", "FAIL").text();
    EXPECT_EQ(folder.read(without_lines(failed, 3, 3)).result, run_result::fail);
}

/* A run that ends with SKIP says by its steps which of three things that is, and old ones of a part by their pass. */
TEST(RunRecord, TellsPartialInterruptedAndUnjudgedRunsApart)
{
    const journal_builder::json only{{"only", "poe,vop"}}, skip{{"skip", "packet"}}, none{{"skip", ""}};
    const auto signal = [](const char *name) {
        return journal_builder::json{
            {"error", {{"symptom", "interrupted"}, {"message", std::string("The run was interrupted by ") + name}}}};
    };
    struct {
        journal_builder journal;
        const char *status;
        run_result expected;
        bool partial;
    } runs[] = {
        {journal_builder("A", 4, 0, none).begin("poe").whole("unknown", ""), "SKIP", run_result::unjudged, false},
        {journal_builder().begin("poe").whole("pass", "").leave_out("vop"), "SKIP", run_result::interrupted, false},
        {journal_builder().begin("poe").whole("pass", ""), "SKIP", run_result::interrupted, false},
        {journal_builder().run(signal("SIGHUP.")), "SKIP", run_result::interrupted, false},
        {journal_builder("A", 4, 0, only).begin("poe").whole("pass", "").leave_out("packet"), "SKIP",
         run_result::partial, true},
        {journal_builder("A", 4, 0, skip).begin("poe").whole("pass", "").leave_out("packet"), "COMPLETE",
         run_result::partial, true},
        {journal_builder("A", 4, 0, only).begin("poe").whole("pass", "").leave_out("vop"), "SKIP",
         run_result::interrupted, true},
        {journal_builder("A", 4, 0, only).begin("poe").whole("unknown", "").leave_out("packet"), "SKIP",
         run_result::unjudged, true},
        {journal_builder("A", 4, 0, only).begin("poe").whole("pass", "").begin("vop").whole("fail", ""), "SKIP",
         run_result::no_verdict, true},
        {journal_builder("A", 4, 0, only).begin("poe").whole("fail", "").leave_out("packet"), "COMPLETE",
         run_result::fail, true},
    };
    const run_folder folder;
    for (auto &[journal, status, expected, partial] : runs) {
        const bool skipped = std::string(status) == "SKIP";
        const char *result = skipped ? "NOT_APPLICABLE" : expected == run_result::fail ? "FAIL" : "PASS";
        const run_record run = folder.read(journal.end(status, result).text());
        EXPECT_EQ(word_of(run.result), std::string(word_of(expected))) << journal.text();
        EXPECT_EQ(run.partial, partial) << journal.text();
    }
    EXPECT_EQ(folder.read(runs[3].journal.text()).signal, "SIGHUP");
}

TEST(RunRecord, ReadsJournalsOfOtherPrograms)
{
    const run_record run = run_folder().read(journal::read_text(FOREIGN_JOURNAL));
    EXPECT_EQ(run.result, run_result::fail);
    EXPECT_EQ(run.serial, "R7");
    EXPECT_EQ(run.operator_name, "");
    ASSERT_EQ(run.ports.size(), 1U);
    EXPECT_EQ(run.ports[0].port, 1);
    ASSERT_EQ(run.attempts.size(), 2U);
    EXPECT_EQ(run.attempts[0].verdict, verdict::pass);
    EXPECT_EQ(run.attempts[1].verdict, verdict::fail);
    EXPECT_EQ(run.attempts[1].checks.at(1).value.text(), "17");
    EXPECT_EQ(run.attempts[1].checks.at(2).where.name, "port1 lane0");
}

TEST(RunRecord, RefusesWhatIsNoJournal)
{
    const run_folder folder;
    EXPECT_NE(folder.refused("[1]\n"), "");
    EXPECT_EQ(folder.refused("{\"name\":\"x\"}\n"), ":1: no schemaVersion, so this is no journal");
    EXPECT_EQ(folder.refused(journal_builder().text() + "oops\n{}\n"), ":3: not a JSON object, so this is no journal");
    EXPECT_THROW(journal::read_run(folder.path / "nowhere"), journal::no_journal);
}

TEST(RunRecord, AnyTypeInAnyPlaceIsHarmless)
{
    const run_folder folder;
    EXPECT_EQ(folder.read("").result, run_result::incomplete);
    const std::string text = journal::read_text(FOREIGN_JOURNAL);
    for (const char *odd : {"null", "[]", "{}", "-1e300", "\"\\u0000\\u001b\"", "[[1,\"a\"],{\"b\":null}]"})
        for (size_t at = text.find(':'); at != std::string::npos; at = text.find(':', at + 1)) {
            std::string broken = text;
            const size_t end = broken.find_first_of(",}\n", at);
            broken.replace(at + 1, end - at - 1, odd);
            try {
                folder.read(broken);
            } catch (const journal::no_journal &) {
                continue; /* also an answer */
            }
        }
}
