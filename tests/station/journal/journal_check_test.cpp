/* SPDX-License-Identifier: MIT
 *
 * The checker passes good journals, and names the line and the reason of whatever makes one bad.
 */
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "sample_runs.h"
#include "station/journal/journal_check.h"
#include "station/journal/journal_text.h"

/* A journal of another program, which uses all that the format has. */
static std::string foreign()
{
    return journal::read_text(FOREIGN_JOURNAL);
}

static std::string problems_of(const std::string &text)
{
    std::string shown;
    for (const journal::problem &one : journal::check_journal(text).problems)
        shown += fmt::format("{}: {}\n", one.line, one.sentence);
    return shown;
}

TEST(journal_check, good_journals_pass)
{
    EXPECT_EQ(problems_of(foreign()), "");
    const std::string own =
        journal_of("step poe 1/2 | 1 code = 3 <= 5 | 1 overload-fail-retried bad | over fail-retried | "
                   "step poe 2/2 | 1 overload-pass | over pass all good | end PASS");
    EXPECT_EQ(problems_of(own), "");
    EXPECT_EQ(journal::check_journal(own).lines, 14U);
}

/* The good journal with one passage replaced. */
struct damage {
    const char *what, *found, *replacement, *problems;
};

static const damage damages[] = {
    {"not_json", "{\"schemaVersion\"", "schemaVersion", "1: not a JSON object\n"},
    {"two_on_a_line", "\n{\"testStepArtifact\":{\"testStepId\":\"b\",\"file\"", " {\"x\":{\"a\":{\"b\"",
     "13: not a JSON object\n14: sequenceNumber is 14; expected 13\n"},
    {"version", "\"minor\":0", "\"minor\":1",
     "1: schemaVersion is not that of this format; expected major 2, minor 0\n"},
    {"gap", "\"sequenceNumber\":9", "\"sequenceNumber\":10",
     "10: sequenceNumber is 10; expected 9\n11: sequenceNumber is 10; expected 11\n"},
    {"negative", "\"sequenceNumber\":9", "\"sequenceNumber\":-9",
     "10: sequenceNumber is -9; expected a whole number from 0\n"},
    {"local_time", "15:04.114Z", "15:04.114+01:00",
     "5: timestamp is \"2025-03-04T08:15:04.114+01:00\"; expected a UTC time such as 2026-11-23T08:15:02.114Z\n"},
    {"whole_seconds", "15:04.114Z", "15:04Z",
     "5: timestamp is \"2025-03-04T08:15:04Z\"; expected a UTC time such as 2026-11-23T08:15:02.114Z\n"},
    {"no_such_day", "03-04T08:15:04.114Z", "02-30T08:15:04.114Z",
     "5: timestamp is \"2025-02-30T08:15:04.114Z\"; expected a UTC time such as 2026-11-23T08:15:02.114Z\n"},
    {"two_artifacts", "{\"testRunArtifact\":{\"log\"", "{\"testStepArtifact\":7,\"testRunArtifact\":{\"log\"",
     "2: testStepArtifact is 7; expected an object\n"
     "2: has 2 of schemaVersion, testRunArtifact and testStepArtifact; expected one\n"},
    {"two_kinds", "\"testStepId\":\"b\",\"file\"",
     "\"testStepId\":\"b\",\"log\":{\"severity\":\"INFO\",\"message\":\"\"},\"file\"",
     "14: has 2 artifacts; expected one\n"},
    {"unknown_kind", "{\"log\":", "{\"remark\":", "2: remark is no artifact of a run\n"},
    {"no_step_id", "\"testStepId\":\"b\",\"file\"", "\"file\"", "14: testStepId is missing\n"},
    {"missing", "\"name\":\"burn-in\",", "", "3: testRunStart.name is missing\n"},
    {"wrong_type", "\"isSnapshot\":false", "\"isSnapshot\":\"no\"",
     "14: file.isSnapshot is \"no\"; expected true or false\n"},
    {"additional", "\"unit\":\"V\"", "\"units\":\"V\"", "5: measurement.units is no member that a journal has\n"},
    {"null", "\"hours\":4", "\"hours\":[1,null]",
     "3: testRunArtifact.testRunStart.parameters.hours.1 is null; what is not known is left out\n"},
    {"severity", "\"INFO\"", "\"LOUD\"", "2: log.severity is \"LOUD\"; expected INFO, DEBUG, WARNING, ERROR, FATAL\n"},
    {"diagnosis_type", "\"PASS\"", "\"GOOD\"", "6: diagnosis.type is \"GOOD\"; expected PASS, FAIL, UNKNOWN\n"},
    {"array_value", "\"value\":50.0", "\"value\":[50.0]",
     "5: measurement.validators[0].value is array; expected a text, a number, true or false\n"
     "5: a validator compares a number with a array\n"},
    {"other_type", "\"value\":57", "\"value\":\"57\"", "5: a validator compares a number with a string\n"},
    {"series_type", "\"value\":17", "\"value\":true", "11: a validator compares a boolean with a number\n"},
    {"hardware", "\"type\":\"PASS\",\"hardwareInfoId\":\"1\"", "\"type\":\"PASS\",\"hardwareInfoId\":\"2\"",
     "6: hardwareInfoId \"2\" is not defined in dutInfo\n"},
    {"software", "[\"fw\"]", "[\"fx\"]", "15: softwareInfoId \"fx\" is not defined in dutInfo\n"},
    {"defined_twice", "\"hardwareInfoId\":\"0\"", "\"hardwareInfoId\":\"1\"",
     "3: hardwareInfoId \"1\" is defined twice\n"},
    {"step_twice", "\"b\",\"testStepStart\"", "\"a\",\"testStepStart\"",
     "7: testStepId \"a\" was used before\n8: step \"b\" was not started\n"},
    {"closed_step", "\"testStepId\":\"b\",\"file\"", "\"testStepId\":\"a\",\"file\"", "14: step \"a\" has ended\n"},
    {"step_status", "\"testStepEnd\":{\"status\":\"COMPLETE\"}", "\"testStepEnd\":{\"status\":\"PASS\"}",
     "10: testStepEnd.status is \"PASS\"; expected COMPLETE, ERROR, SKIP\n"},
    {"element_index", "\"index\":1", "\"index\":2", "11: index is 2; expected 1\n"},
    {"series_total", "\"totalCount\":2", "\"totalCount\":3", "12: totalCount is 3; expected 2\n"},
    {"series_unknown", "\"s\",\"totalCount\"", "\"t\",\"totalCount\"",
     "12: measurement series \"t\" is not open in the step\n16: measurement series \"s\" of the step has not ended\n"},
    {"end_pair", "\"COMPLETE\",\"result\"", "\"ERROR\",\"result\"", "17: status ERROR does not go with result FAIL\n"},
    {"false_pass", "\"result\":\"FAIL\"", "\"result\":\"PASS\"", "17: the run passed, but a diagnosis is FAIL\n"},
    {"fail_without_diagnosis", "\"type\":\"FAIL\"", "\"type\":\"UNKNOWN\"", ""}, /* a measurement may say why */
};

TEST(journal_check, names_the_line_and_the_reason)
{
    for (const damage &one : damages) {
        SCOPED_TRACE(one.what);
        std::string text = foreign();
        const size_t at = text.find(one.found);
        ASSERT_NE(at, std::string::npos);
        text.replace(at, std::string(one.found).size(), one.replacement);
        EXPECT_EQ(problems_of(text), one.problems);
    }
}

TEST(journal_check, journals_have_a_beginning_and_an_end)
{
    const std::string whole = journal_of("step poe | over none | end SKIP");
    const std::pair<std::string, const char *> journals[] = {
        {"", "1: the file is empty\n"},
        {whole.substr(0, whole.size() - 1),
         "6: the line has no line end, so it may not be whole\n6: the journal ends without testRunEnd\n"},
        {journal_of("skip=poe | end PASS"), "3: the run passed, but steps of its plan were left out; expected SKIP\n"},
        {journal_of("step poe | end SKIP"), "5: step \"0\" has not ended\n"},
        {journal_of("end SKIP | end SKIP"), "4: stands after testRunEnd, which must be the last line\n"},
        {"{\"sequenceNumber\":0,\"timestamp\":\"2026-11-23T08:15:02.114Z\",\"testStepArtifact\":"
         "{\"testStepId\":\"0\",\"testStepStart\":{\"name\":\"poe\"}}}\n",
         "1: is no schemaVersion, which must be the first line\n1: a step before testRunStart\n"
         "1: the journal ends without testRunEnd\n"},
    };
    for (const auto &[text, problems] : journals)
        EXPECT_EQ(problems_of(text), problems);
}

TEST(journal_check, whatever_a_line_holds_is_harmless)
{
    const std::string deep = "{\"schemaVersion\":" + std::string(200000, '[') + std::string(200000, ']') + "}\n";
    for (const std::string &text : {deep, std::string("\0\xFF\n", 3), std::string("[]\n7\n\"\"\n{}\n\n")})
        EXPECT_FALSE(journal::check_journal(text).problems.empty());
}
