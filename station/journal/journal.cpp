/* SPDX-License-Identifier: MIT */
#include "journal.h"

#include <cerrno>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "journal_lines.h"
#include "journal_text.h"

namespace journal
{

static std::string reason_of(int error)
{
    return std::generic_category().message(error);
}

[[noreturn]] static void refuse(const char *what, const std::filesystem::path &path, const std::string &reason)
{
    throw not_saved(fmt::format("cannot {} '{}': {}", what, path.string(), reason));
}

/* Makes a new name in a folder outlast a loss of power. */
static void sync_folder(const std::filesystem::path &folder)
{
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool synced = fd >= 0 && fsync(fd) == 0;
    const int error = errno;
    if (fd >= 0)
        close(fd);
    if (!synced)
        refuse("save folder", folder, reason_of(error));
}

std::filesystem::path create_run_folder(const std::filesystem::path &results, const std::string &name)
{
    std::error_code error;
    std::filesystem::create_directories(results, error);
    if (error)
        refuse("create folder", results, error.message());
    for (int count = 1;; count++) {
        auto folder = results / (count == 1 ? name : fmt::format("{}-{}", name, count));
        if (mkdir(folder.c_str(), 0777) == 0) {
            sync_folder(results);
            return folder;
        }
        if (errno != EEXIST)
            refuse("create folder", folder, reason_of(errno));
    }
}

std::chrono::sys_time<std::chrono::milliseconds> system_time()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

/* In UTC, as 2026-11-23T08:15:02.114Z. */
static std::string timestamp(std::chrono::sys_time<std::chrono::milliseconds> time)
{
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(time)),
                       time.time_since_epoch().count() % 1000);
}

writer::writer(const std::filesystem::path &run_dir, clock_source clock)
    : run_dir_(run_dir), clock_(std::move(clock)),
      fd_(open((run_dir / FILE_NAME).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0666))
{
    if (fd_ < 0)
        fail(reason_of(errno));
    write_line("schemaVersion", {{"major", 2}, {"minor", 0}});
    sync_folder(run_dir_);
}

writer::~writer()
{
    if (fd_ >= 0)
        close(fd_);
}

/* A line cut short must stay the last one, so the file is given up. */
void writer::fail(const std::string &reason)
{
    if (fd_ >= 0)
        close(fd_);
    fd_ = -1;
    refuse("write", run_dir_ / FILE_NAME, reason);
}

void writer::write_line(const char *kind, const ordered_json &content)
{
    const ordered_json artifact{{kind, content}, {"sequenceNumber", lines_}, {"timestamp", timestamp(clock_())}};
    const std::string line = artifact.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
    errno = EBADF; /* of a journal that was given up before */
    const ssize_t written = fd_ < 0 ? -1 : write(fd_, line.data(), line.size());
    if (written != static_cast<ssize_t>(line.size()))
        fail(written < 0 ? reason_of(errno)
                         : fmt::format("only {} of {} bytes of a line were taken", written, line.size()));
    lines_++;
}

void writer::step_artifact(const std::string &step_id, const char *kind, const ordered_json &content)
{
    write_line("testStepArtifact", {{"testStepId", step_id}, {kind, content}});
}

/* A row of a reply is a part that only the reply can tell apart from others. */
static void add_place(ordered_json &content, const common::place &where)
{
    if (where.id.empty())
        content["subcomponent"] = {{"name", where.name}};
    else
        content["hardwareInfoId"] = where.id;
}

void writer::run_start(const ordered_json &content)
{
    write_line("testRunArtifact", {{"testRunStart", content}});
}

std::string writer::step_start(const std::string &name, const ordered_json &content)
{
    std::string id = std::to_string(steps_++);
    step_artifact(id, "testStepStart", {{"name", name}});
    step_artifact(id, "extension", {{"name", "facmsg-step"}, {"content", content}});
    return id;
}

static ordered_json validator(const common::limit &limit)
{
    ordered_json content = ordered_json::object();
    if (!limit.name.empty())
        content["name"] = limit.name;
    content.update({{"type", limit.type}, {"value", limit.value.json()}});
    return content;
}

void writer::measurement(const std::string &step_id, const common::check &check)
{
    if (check.value.is_empty() || !check.value.is_finite())
        return;
    ordered_json content{{"name", check.name}, {"value", check.value.json()}};
    if (!check.unit.empty())
        content["unit"] = check.unit;
    for (const common::limit &limit : check.limits)
        content["validators"].push_back(validator(limit));
    add_place(content, check.where);
    step_artifact(step_id, "measurement", content);
}

void writer::diagnosis(const std::string &step_id, const common::check &check)
{
    const diagnosis_ending ending = ending_of(check.verdict);
    ordered_json content{{"verdict", fmt::format("{}{}", check.name, ending.text)}, {"type", ending.type}};
    if (!check.sentence.empty())
        content["message"] = check.sentence;
    add_place(content, check.where);
    step_artifact(step_id, "diagnosis", content);
}

void writer::error(const std::string &step_id, const std::string &symptom, const std::string &message)
{
    step_artifact(step_id, "error", {{"symptom", symptom}, {"message", message}});
}

void writer::log(const std::string &step_id, const std::string &message)
{
    step_artifact(step_id, "log", {{"severity", "INFO"}, {"message", message}});
}

void writer::step_end(const std::string &step_id, step_status status)
{
    const char *word = status == step_status::complete ? "COMPLETE" : status == step_status::error ? "ERROR" : "SKIP";
    step_artifact(step_id, "testStepEnd", {{"status", word}});
}

void writer::run_error(const std::string &symptom, const std::string &message)
{
    write_line("testRunArtifact", {{"error", {{"symptom", symptom}, {"message", message}}}});
}

void writer::run_end(run_status status)
{
    const bool complete = status == run_status::pass || status == run_status::fail;
    const char *word = complete ? "COMPLETE" : status == run_status::error ? "ERROR" : "SKIP";
    const char *result = !complete ? "NOT_APPLICABLE" : status == run_status::pass ? "PASS" : "FAIL";
    write_line("testRunArtifact", {{"testRunEnd", {{"status", word}, {"result", result}}}});
    if (fdatasync(fd_) != 0)
        fail(reason_of(errno));
    sync_folder(run_dir_);
}

} // namespace journal
