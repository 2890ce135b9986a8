/* SPDX-License-Identifier: MIT
 *
 * write_samples FOLDER: a run folder with its reports for each sample, to be looked at in a browser.
 */
#include "sample_runs.h"
#include "station/journal/run_record.h"
#include "station/reports/reports.h"

int main(int, char **arguments)
{
    const std::filesystem::path folder = arguments[1];
    const std::pair<const char *, journal_builder> samples[] = {
        {"pass-28", passing_run()},       {"fail-28", failing_run()}, {"fail-52", failing_run(52)},
        {"pass-256", passing_run(256)},   {"error", erring_run()},    {"interrupted", interrupted_run()},
        {"incomplete", incomplete_run()}, {"hostile", hostile_run()}, {"partial", partial_run()},
    };
    for (const auto &[name, journal] : samples)
        reports::write_reports(folder / name, journal::read_run(journal.save(folder / name)));
}
