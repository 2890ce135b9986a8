/* SPDX-License-Identifier: MIT
 *
 * What a run came to, for everyone who asks: the operator, the build server, the spreadsheet, the browser. All texts
 * are UTF-8, made from the record alone, and the same on every call, from any thread. columns are those of the
 * terminal, from 1; at 40 and more no line is longer.
 */
#ifndef REPORTS_REPORTS_H
#define REPORTS_REPORTS_H

#include <filesystem>
#include <optional>
#include <string>

#include "common/text.h"
#include "common/verdict.h"
#include "station/journal/run_record.h"

namespace reports
{

struct history_filter;

/* Writes junit.xml, results.csv and report.html into the run folder. Each is whole on the disk before it gets its
 * name. Throws std::system_error when one could not be written. */
void write_reports(const std::filesystem::path &run_dir, const journal::run_record &run);

/* The verdict for the operator: what it is, why, and at last where the report is. */
std::string verdict_text(const journal::run_record &run, const std::filesystem::path &run_dir, bool colour,
                         size_t columns = common::SCREEN_COLUMNS);

/* In its place for a run whose reports could not be written: how to have them written later. */
std::string unsaved_text(const std::filesystem::path &run_dir);

/* The code with which the program ends for a run. */
common::exit_code exit_code_of(const journal::run_record &run);

/* One JSON object on the run: verdict, exit_code, summary, run_dir, its labels, whole_plan, failures, faults, steps.
 * When the reports could not be written, exit_code is 4 and error says why. */
std::string run_json(const journal::run_record &run, const std::filesystem::path &run_dir,
                     const std::optional<std::string> &not_saved = std::nullopt);

/* The texts of the files. */
std::string junit_text(const journal::run_record &run);
std::string csv_text(const journal::run_record &run);
std::string html_text(const journal::run_record &run);

/* What the program does with journals that are there already. Results go to stdout, as text or as one JSON object,
 * errors to stderr. */
enum class form { text, coloured, json };

/* Writes the reports of a run again and prints its verdict. Returns the exit code of the run; usage when there is no
 * journal, not_saved when a report could not be written, which is said in place of the verdict; programs are told both.
 */
common::exit_code report_tool(const std::filesystem::path &run_dir, form output);

/* Prints what is wrong with a journal, a line each. passed when it is valid, failed when not, usage when it
 * cannot be read. */
common::exit_code check_tool(const std::filesystem::path &file, form output);

/* Prints what the runs in the directory come to, and each of them if they are to be listed. passed; usage when it
 * cannot be read, nothing_run when there is no such run in it. */
common::exit_code history_tool(const std::filesystem::path &dir, const history_filter &filter, bool list_runs,
                               form output);

} // namespace reports

#endif
