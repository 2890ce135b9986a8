/* SPDX-License-Identifier: MIT
 *
 * A folder of runs for as long as a test runs.
 */
#ifndef TESTS_RUN_FOLDERS_H
#define TESTS_RUN_FOLDERS_H

#include <cstdlib>
#include <filesystem>

#include "sample_runs.h"
#include "station/journal/run_record.h"

struct run_folders {
    std::filesystem::path path;
    run_folders()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "test runs XXXXXX";
        path = mkdtemp(pattern.data());
    }
    ~run_folders()
    {
        std::filesystem::remove_all(path);
    }
    run_folders(const run_folders &) = delete;
    run_folders &operator=(const run_folders &) = delete;
};

/* The run as the reports get it. */
inline journal::run_record record_of(const journal_builder &journal)
{
    const run_folders folder;
    return journal::read_run(journal.save(folder.path / "run"));
}

#endif
