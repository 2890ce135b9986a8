/* SPDX-License-Identifier: MIT
 *
 * What the program does with journals that are there already. Results go to stdout, as text or as one JSON object,
 * errors to stderr.
 */
#ifndef REPORTS_REPORT_TOOLS_H
#define REPORTS_REPORT_TOOLS_H

#include <filesystem>

#include "common/verdict.h"
#include "history.h"

namespace reports
{

enum class form { text, coloured, json };

/* Writes the reports of a run again and prints its verdict. Returns the exit code of the run; usage when there is no
 * journal, not_saved when a report could not be written, which is said in place of the verdict; programs are told both.
 */
common::exit_code report_tool(const std::filesystem::path &run_dir, form wanted);

/* Prints what is wrong with a journal, a line each. passed when it is valid, failed when not, usage when it
 * cannot be read. */
common::exit_code check_tool(const std::filesystem::path &file, form wanted);

/* Prints what the runs in the directory come to, and each of them if they are to be listed. passed; usage when it
 * cannot be read, nothing_run when there is no such run in it. */
common::exit_code history_tool(const std::filesystem::path &dir, const history_filter &filter, bool list_runs,
                               form wanted);

} // namespace reports

#endif
