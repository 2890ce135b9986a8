/* SPDX-License-Identifier: MIT
 *
 * write_samples FOLDER: a run folder with its reports for each sample, to be looked at in a browser.
 */
#include "sample_runs.h"
#include "station/reports/reports.h"

int main(int, char **arguments)
{
    const std::filesystem::path folder = arguments[1];
    for (const sample &one : read_samples(SAMPLES))
        reports::write_reports(folder / one.name, journal::read_run(write_run(folder / one.name, one.story)));
}
