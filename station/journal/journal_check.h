/* SPDX-License-Identifier: MIT
 *
 * Judges whether a file is a journal that any reader of the format can take: line by line, and the lines together.
 */
#ifndef JOURNAL_JOURNAL_CHECK_H
#define JOURNAL_JOURNAL_CHECK_H

#include <string>
#include <string_view>
#include <vector>

namespace journal
{

/* A run of a part of the plan may not end as one of the whole. */
constexpr const char *partial_pass = "the run passed, but steps of its plan were left out; expected SKIP";

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
