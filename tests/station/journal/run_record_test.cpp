/* SPDX-License-Identifier: MIT
 *
 * Nothing that is done to a journal makes a pass of it, and no file can do the reader harm. What a sound journal says
 * is asserted on the reports.
 */
#include <gtest/gtest.h>

#include "sample_runs.h"
#include "station/journal/journal_text.h"

using journal::run_record;
using journal::run_result;

static std::string replaced(std::string text, const std::string &passage, const std::string &replacement)
{
    return text.replace(text.find(passage), passage.size(), replacement);
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

constexpr const char *PASSING = "step poe | 1 overload-pass | over pass | step packet | over pass | end PASS";

TEST(run_record, an_end_that_means_nothing_is_no_verdict)
{
    const std::string whole = journal_of(PASSING), end = R"("status":"COMPLETE","result":"PASS")";
    EXPECT_EQ(record_in(whole).result, run_result::pass);
    for (const char *other : {R"("status":"ERROR","result":"PASS")", R"("status":"COMPLETE","result":"NOT_APPLICABLE")",
                              R"("status":"SKIP","result":"PASS")"})
        EXPECT_EQ(record_in(replaced(whole, end, other)).result, run_result::no_verdict) << other;
    for (size_t cut = 1; cut < whole.size(); cut += 17)
        ASSERT_EQ(record_in(whole.substr(0, whole.size() - cut)).result, run_result::incomplete) << cut;
}

TEST(run_record, a_pass_that_the_steps_contradict_is_none)
{
    for (const auto &[labels, word] : {std::pair{"", "PASS"}, {"only=poe | ", "PARTIAL"}}) {
        const run_record run = record_of(std::string(labels) + "step poe | 1 overload-fail bad | over pass | end PASS");
        EXPECT_EQ(run.result, run_result::no_verdict);
        EXPECT_EQ(run.errors.at(0).message,
                  std::string("The journal ends with ") + word + ", but its step poe is FAIL.");
        EXPECT_EQ(record_of(std::string(labels) + "step poe | end PASS").result, run_result::no_verdict);
    }
}

TEST(run_record, a_pass_from_which_lines_are_missing_is_none)
{
    const std::string whole = journal_of(PASSING);
    const size_t count = journal::lines_of(whole).size();
    for (size_t first = 2; first < count; first++)
        for (size_t last = first; last < count; last++) {
            const run_record run = record_in(without_lines(whole, first, last));
            EXPECT_EQ(run.result, run_result::no_verdict) << first << " to " << last;
            EXPECT_EQ(run.errors.size(), 1U);
        }
    EXPECT_EQ(record_in(without_lines(whole, 3, count - 1)).errors.at(0).message,
              "The journal ends with PASS, but is not valid: line 3: sequenceNumber is 11; expected 2.");
    EXPECT_EQ(record_in(whole + "{").result, run_result::no_verdict); /* something was written after the end */
    const std::string failed = journal_of("step poe | over fail | end FAIL");
    EXPECT_EQ(record_in(without_lines(failed, 3, 3)).result, run_result::fail); /* a failure is none the less one */
}

/* Why the text is no journal, after the name of the file. */
static std::string refusal_of(const std::string &text)
{
    try {
        record_in(text);
        return "";
    } catch (const journal::no_journal &why) {
        const std::string sentence = why.what();
        return sentence.substr(sentence.find(journal::FILE_NAME) + std::string_view(journal::FILE_NAME).size());
    }
}

TEST(run_record, what_is_no_journal_is_refused_and_what_is_no_time_is_none)
{
    EXPECT_EQ(refusal_of("[1]\n"), ":1: not a JSON object, so this is no journal");
    EXPECT_EQ(refusal_of("{\"name\":\"x\"}\n"), ":1: no schemaVersion, so this is no journal");
    EXPECT_EQ(refusal_of(journal_of("") + "oops\n{}\n"), ":3: not a JSON object, so this is no journal");
    EXPECT_THROW(journal::read_run("/nowhere"), journal::no_journal);
    const run_record run = record_of("hour=1 | step poe | wait 2.5 | over pass | end PASS");
    EXPECT_EQ(seconds_between(run.start, run.end), 2.51);
    EXPECT_EQ(seconds_between(run.end, run.start), 0); /* clocks are set */
    EXPECT_EQ(seconds_between(run.end, {}), std::nullopt);
    EXPECT_EQ(record_in("").result, run_result::incomplete);
}

TEST(run_record, any_type_in_any_place_is_harmless)
{
    const std::string text = journal::read_text(FOREIGN_JOURNAL);
    for (const char *odd : {"null", "[]", "{}", "-1e300", "\"\\u0000\\u001b\"", "[[1,\"a\"],{\"b\":null}]"})
        for (size_t at = text.find(':'); at != std::string::npos; at = text.find(':', at + 1)) {
            std::string broken = text;
            broken.replace(at + 1, broken.find_first_of(",}\n", at) - at - 1, odd);
            refusal_of(broken);
        }
}
