/* SPDX-License-Identifier: MIT
 *
 * What the lines of a journal say, one by one. What they come to together is in run_record.
 */
#ifndef JOURNAL_JOURNAL_READER_H
#define JOURNAL_JOURNAL_READER_H

#include <string>
#include <string_view>
#include <vector>

#include "run_record.h"

namespace journal
{

/* What the result of a run depends on beside its record. */
struct run_choice {
    std::vector<std::string> only = {}, skipped = {}; /* names of steps that the operator chose, or left out */
    bool interrupted = false;                         /* the journal says so */
};

/* Adds what the whole lines of a journal say to an empty record: its result as the end line has it, attempts in the
 * order of their start, with the verdict none where no line says one and incomplete where they have no end. Throws
 * no_journal, with the name of the file and the line. */
run_choice read_lines(std::string_view text, const std::string &file, run_record &run);

} // namespace journal

#endif
