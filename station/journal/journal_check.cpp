/* SPDX-License-Identifier: MIT
 *
 * What holds between lines. The shape of a line is in journal_shape, the order of values in measurement_check.
 */
#include "journal_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "journal_lines.h"

namespace journal
{

static std::string in_quotes(const std::string &id)
{
    return '"' + id + '"';
}

constexpr size_t MOST_NESTED = 64;

/* The path to a null, or nothing. Deeper objects than any artifact has are not searched. */
static std::string find_null(const json &value, const std::string &path, size_t depth = 0)
{
    if (value.is_null())
        return path;
    if (!value.is_structured() || depth > MOST_NESTED)
        return "";
    for (const auto &[name, inner] : value.items())
        if (std::string null_path =
                find_null(inner, fmt::format("{}{}{}", path, path.empty() ? "" : ".", name), depth + 1);
            !null_path.empty())
            return null_path;
    return "";
}

struct end_pair {
    std::string_view status, result;
};
constexpr end_pair END_PAIRS[] = {
    {"COMPLETE", "PASS"}, {"COMPLETE", "FAIL"}, {"ERROR", "NOT_APPLICABLE"}, {"SKIP", "NOT_APPLICABLE"}};

class stream_checker
{
  public:
    void check(const text_line &line);
    check_outcome finish();

  private:
    using handler = void (stream_checker::*)(const std::string &step, const json &content);
    static const std::map<std::string_view, handler> handlers;

    void add(const std::string &sentence);
    void check_envelope(const json &line);
    void check_version(const json &line);
    void check_artifact(const json &artifact, bool of_step);
    void check_step(const std::string &step, std::string_view kind);
    void check_ids(const json &content);
    void define(const json &unit, const char *list, const char *name, std::set<std::string> &ids);
    void run_start(const std::string &, const json &);
    void run_end(const std::string &, const json &);
    void step_start(const std::string &, const json &);
    void step_end(const std::string &, const json &);
    void diagnosis(const std::string &, const json &);

    check_outcome outcome = {};
    size_t number = 0;
    uint64_t next_sequence = 0;
    bool started = false, ended = false, failed = false, partial = false;
    std::set<std::string> hardware_ids = {}, software_ids = {};
    std::map<std::string, bool> steps = {}; /* by testStepId: whether it is open */
    measurement_checker measurements{[this](const std::string &sentence) { add(sentence); }};
};

const std::map<std::string_view, stream_checker::handler> stream_checker::handlers = {
    {"testRunStart", &stream_checker::run_start},   {"testRunEnd", &stream_checker::run_end},
    {"testStepStart", &stream_checker::step_start}, {"testStepEnd", &stream_checker::step_end},
    {"diagnosis", &stream_checker::diagnosis},
};

void stream_checker::add(const std::string &sentence)
{
    outcome.problems.push_back({number, sentence});
}

void stream_checker::check(const text_line &line)
{
    number = ++outcome.lines;
    if (!line.complete) {
        add("the line has no line end, so it may not be whole");
        return;
    }
    const json value = json::parse(line.text, nullptr, false);
    if (!value.is_object()) {
        add("not a JSON object");
        next_sequence++;
        return;
    }
    if (const std::string null = find_null(value, ""); !null.empty())
        add(null + " is null; what is not known is left out");
    if (ended)
        add("stands after testRunEnd, which must be the last line");
    check_envelope(value);
}

void stream_checker::check_envelope(const json &line)
{
    for (const std::string &sentence : shape_problems(line))
        add(sentence);
    if (const auto sequence = line.find("sequenceNumber"); sequence != line.end() && sequence->is_number_unsigned()) {
        if (*sequence != next_sequence)
            add(fmt::format("sequenceNumber is {}; expected {}", sequence->dump(), next_sequence));
        next_sequence = sequence->get<uint64_t>();
    }
    next_sequence++;
    const auto artifacts = line.count("schemaVersion") + line.count("testRunArtifact") + line.count("testStepArtifact");
    if (artifacts != 1)
        add(fmt::format("has {} of schemaVersion, testRunArtifact and testStepArtifact; expected one", artifacts));
    check_version(line);
    if (const auto run = line.find("testRunArtifact"); run != line.end() && run->is_object())
        check_artifact(*run, false);
    if (const auto step = line.find("testStepArtifact"); step != line.end() && step->is_object())
        check_artifact(*step, true);
}

void stream_checker::check_version(const json &line)
{
    const auto version = line.find("schemaVersion");
    if ((version != line.end()) != (number == 1))
        add(number == 1 ? "is no schemaVersion, which must be the first line" : "is a second schemaVersion");
    else if (number == 1 && *version != json{{"major", 2}, {"minor", 0}})
        add("schemaVersion is not that of this format; expected major 2, minor 0");
}

void stream_checker::check_artifact(const json &artifact, bool of_step)
{
    const std::string step = of_step ? raw_text_at(artifact, "testStepId") : "";
    const size_t count = artifact.size() - artifact.count("testStepId");
    for (const auto &[name, content] : artifact.items()) {
        if (!content.is_object())
            continue;
        if (of_step)
            check_step(step, name);
        check_ids(content);
        if (const auto handle = handlers.find(name); handle != handlers.end())
            (this->*handle->second)(step, content);
        if (of_step)
            measurements.check(step, name, content);
    }
    if (count != 1)
        add(fmt::format("has {} artifacts; expected one", count));
}

/* Everything about a step stands between its start and its end. */
void stream_checker::check_step(const std::string &step, std::string_view kind)
{
    const auto entry = steps.find(step);
    if (!started)
        add("a step before testRunStart");
    if (kind == "testStepStart" || step.empty())
        return;
    if (entry == steps.end()) {
        add("step " + in_quotes(step) + " was not started");
        steps[step] = true;
    } else if (!entry->second) {
        add("step " + in_quotes(step) + " has ended");
    }
}

void stream_checker::check_ids(const json &content)
{
    const std::string hardware = raw_text_at(content, "hardwareInfoId");
    if (content.contains("hardwareInfoId") && !hardware_ids.contains(hardware))
        add("hardwareInfoId " + in_quotes(hardware) + " is not defined in dutInfo");
    const auto software = content.find("softwareInfoIds");
    if (software == content.end() || !software->is_array())
        return;
    for (const json &id : *software)
        if (id.is_string() && !software_ids.contains(id.get<std::string>()))
            add("softwareInfoId " + id.dump() + " is not defined in dutInfo");
}

void stream_checker::define(const json &unit, const char *list, const char *name, std::set<std::string> &ids)
{
    const auto infos = unit.find(list);
    if (infos == unit.end() || !infos->is_array())
        return;
    for (const json &info : *infos)
        if (info.is_object() && info.contains(name) && !ids.insert(raw_text_at(info, name)).second)
            add(std::string(name) + " " + in_quotes(raw_text_at(info, name)) + " is defined twice");
}

void stream_checker::run_start(const std::string &, const json &content)
{
    if (started)
        add("a second testRunStart");
    started = true;
    if (const auto parameters = content.find("parameters"); parameters != content.end() && parameters->is_object())
        partial = !raw_text_at(*parameters, "only").empty() || !raw_text_at(*parameters, "skip").empty();
    if (const auto unit = content.find("dutInfo"); unit != content.end() && unit->is_object()) {
        define(*unit, "hardwareInfos", "hardwareInfoId", hardware_ids);
        define(*unit, "softwareInfos", "softwareInfoId", software_ids);
    }
}

void stream_checker::run_end(const std::string &, const json &content)
{
    const std::string status = raw_text_at(content, "status"), result = raw_text_at(content, "result");
    if (!started)
        add("testRunEnd without testRunStart");
    if (std::ranges::none_of(END_PAIRS,
                             [&](const end_pair &legal) { return legal.status == status && legal.result == result; }))
        add(fmt::format("status {} does not go with result {}", status, result));
    if (result == "PASS" && failed)
        add("the run passed, but a diagnosis is FAIL");
    if (result == "PASS" && partial)
        add(PARTIAL_PASS);
    for (const auto &[step, open] : steps)
        if (open)
            add("step " + in_quotes(step) + " has not ended");
    ended = true;
}

void stream_checker::step_start(const std::string &step, const json &)
{
    if (!step.empty() && !steps.emplace(step, true).second)
        add("testStepId " + in_quotes(step) + " was used before");
}

void stream_checker::step_end(const std::string &step, const json &)
{
    steps[step] = false;
}

void stream_checker::diagnosis(const std::string &, const json &content)
{
    failed = failed || raw_text_at(content, "type") == "FAIL";
}

check_outcome stream_checker::finish()
{
    number = std::max<size_t>(1, outcome.lines);
    if (outcome.lines == 0)
        add("the file is empty");
    else if (!ended)
        add("the journal ends without testRunEnd");
    return std::move(outcome);
}

check_outcome check_journal(std::string_view text)
{
    stream_checker checker;
    for (const text_line &line : lines_of(text))
        checker.check(line);
    return checker.finish();
}

} // namespace journal
