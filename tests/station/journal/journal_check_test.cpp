/* SPDX-License-Identifier: MIT
 *
 * The checker passes good journals, and names the line and the reason of whatever makes one bad.
 */
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "sample_runs.h"
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

TEST(journal_check, names_the_line_and_the_reason)
{
    for (const auto &row : read_rows(DAMAGES)) {
        std::string text = foreign();
        const size_t at = text.find(row.at(0));
        ASSERT_NE(at, std::string::npos) << row[0];
        text.replace(at, row[0].size(), row.at(1));
        std::string problems = problems_of(text);
        for (size_t end = 0; (end = problems.find('\n', end)) != std::string::npos; end += 4)
            problems.replace(end, 1, end + 1 < problems.size() ? " && " : "");
        EXPECT_EQ(problems.empty() ? "valid" : problems, row.at(2)) << row[0];
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
