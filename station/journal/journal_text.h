/* SPDX-License-Identifier: MIT
 *
 * A journal as it lies on the disk: text of one JSON object a line, and whether it is one that any reader can take.
 */
#ifndef JOURNAL_JOURNAL_TEXT_H
#define JOURNAL_JOURNAL_TEXT_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace journal
{

constexpr const char *FILE_NAME = "journal.jsonl";

/* what() is the path and why. */
struct unreadable_file : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* All of a file. Throws unreadable_file. */
std::string read_text(const std::filesystem::path &file);

struct text_line {
    size_t number; /* from 1 */
    std::string_view text;
    bool complete; /* has its line end: what was written before a crash may lack it */
};

/* Points into the text. */
std::vector<text_line> lines_of(std::string_view text);

/* Milliseconds since 1970 of a text such as 2026-11-23T08:15:02.114Z (UTC, milliseconds or finer); nothing for any
 * other form and for days that do not exist. */
std::optional<int64_t> parse_timestamp(std::string_view text);

/* A run of a part of the plan may not end as one of the whole. */
constexpr const char *PARTIAL_PASS = "the run passed, but steps of its plan were left out; expected SKIP";

struct problem {
    size_t line; /* from 1 */
    std::string sentence;
};

struct check_outcome {
    size_t lines = 0;
    std::vector<problem> problems = {}; /* none: the journal is valid */
};

/* Checks a whole journal. Times may go backwards: clocks are set. */
check_outcome check_journal(std::string_view text);

} // namespace journal

#endif
