/* SPDX-License-Identifier: MIT
 *
 * Writes the journal of a run as it happens: a line for each artifact, by one write to a file that is only ever added
 * to. What is in the file stays true whatever ends the program.
 */
#ifndef JOURNAL_JOURNAL_H
#define JOURNAL_JOURNAL_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <stdexcept>
#include <string>

#include "common/verdict.h"

namespace journal
{

using nlohmann::ordered_json;

/* The record of a run could not be kept. what() is one sentence with the file and the system's reason. */
struct not_saved : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* Creates a folder for one run below `results`, which is created if need be: named `name`, or `name`-2, -3… when that
 * is taken. Never takes a folder that exists. Throws not_saved. */
std::filesystem::path create_run_folder(const std::filesystem::path &results, const std::string &name);

/* The log of a step that had to wait has this when the wait is over: its time counts from here. */
constexpr const char *SERVICE_BEGAN = "the service has begun the request";

enum class step_status { complete, error, skip };
enum class run_status { pass, fail, error, skip }; /* error and skip have no result; skip: see run_error */

/* Where the times of the lines come from. */
using clock_source = std::function<std::chrono::sys_time<std::chrono::milliseconds>()>;
std::chrono::sys_time<std::chrono::milliseconds> system_time();

/* The journal of one run. Texts are UTF-8; what is not is replaced. For one thread at a time. Every function throws
 * not_saved, and nothing is written after the first failure. */
class writer
{
  public:
    /* Creates journal.jsonl in the run's folder, where none may be, and writes the schema version. */
    explicit writer(const std::filesystem::path &run_dir, clock_source clock = system_time);
    ~writer();
    writer(const writer &) = delete;
    writer &operator=(const writer &) = delete;

    void run_start(const ordered_json &content);
    /* Begins an attempt at a step and returns its id; content tells what was asked for. */
    std::string step_start(const std::string &name, const ordered_json &content);
    /* The value of a check, with its unit and limits where there are any. Writes nothing for an empty value and for a
     * number that is none. */
    void measurement(const std::string &step_id, const common::check &check);
    /* Its verdict, and the sentence if there is one. */
    void diagnosis(const std::string &step_id, const common::check &check);
    void error(const std::string &step_id, const std::string &symptom, const std::string &message);
    void log(const std::string &step_id, const std::string &message);
    void step_end(const std::string &step_id, step_status status);
    /* What went wrong outside of any step; "interrupted" is what ends a run before its plan. */
    void run_error(const std::string &symptom, const std::string &message);
    /* Returns when the whole journal is on the disk. */
    void run_end(run_status status);

  private:
    void step_artifact(const std::string &step_id, const char *kind, const ordered_json &content);
    void write_line(const char *kind, const ordered_json &content);
    [[noreturn]] void fail(const std::string &reason);

    std::filesystem::path run_dir_;
    clock_source clock_;
    int fd_;
    uint64_t lines_ = 0;
    uint64_t steps_ = 0;
};

} // namespace journal

#endif
