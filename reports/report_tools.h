/* SPDX-License-Identifier: MIT
 *
 * What the program does with journals that are there already. Results go to stdout, errors to stderr.
 */
#ifndef REPORTS_REPORT_TOOLS_H
#define REPORTS_REPORT_TOOLS_H

#include <filesystem>

namespace reports
{

/* Writes the reports of a run again and prints its verdict. Returns the exit code: 0 PASS, 1 FAIL, 2 no journal there,
 * 3 any other result, 4 a report could not be written; the verdict is printed none the less. */
int report_tool(const std::filesystem::path &run_dir, bool colour);

/* Prints what is wrong with a journal, a line each. 0 valid, 1 not valid, 2 it cannot be read. */
int check_tool(const std::filesystem::path &file);

/* Prints what the runs in the directory come to. 0; 2 it cannot be read, 5 there is no run in it. */
int history_tool(const std::filesystem::path &dir, bool json);

} // namespace reports

#endif
