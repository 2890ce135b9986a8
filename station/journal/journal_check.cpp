/* SPDX-License-Identifier: MIT
 *
 * The shape of a line is in journal_shape; here is what holds between lines.
 */
#include "journal_check.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "journal_shape.h"
#include "journal_text.h"

namespace journal
{

using nlohmann::json;

static std::string text_at(const json &object, const char *name)
{
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

static std::string named(const std::string &id)
{
    return '"' + id + '"';
}

constexpr size_t most_nested = 64;

/* The path to a null, or nothing. Deeper objects than any artifact has are not searched. */
static std::string find_null(const json &value, const std::string &path, size_t depth = 0)
{
    if (value.is_null())
        return path;
    if (!value.is_structured() || depth > most_nested)
        return "";
    for (const auto &[name, inner] : value.items())
        if (std::string found = find_null(inner, fmt::format("{}{}{}", path, path.empty() ? "" : ".", name), depth + 1);
            !found.empty())
            return found;
    return "";
}

struct end_pair {
    std::string_view status, result;
};
constexpr end_pair end_pairs[] = {
    {"COMPLETE", "PASS"}, {"COMPLETE", "FAIL"}, {"ERROR", "NOT_APPLICABLE"}, {"SKIP", "NOT_APPLICABLE"}};

namespace
{

class stream_checker
{
  public:
    void check(const text_line &line);
    check_outcome finish();

  private:
    using handler = void (stream_checker::*)(const std::string &step, const json &content);
    static const std::map<std::string_view, handler> handlers;

    struct series_state {
        std::string step;
        size_t count = 0;
        bool open = true;
        json validators = json::array();
    };

    void add(const std::string &sentence);
    void check_envelope(const json &line);
    void check_version(const json &line);
    void check_artifact(const json &artifact, bool of_step);
    void check_step(const std::string &step, std::string_view kind);
    void check_ids(const json &content);
    void define(const json &unit, const char *list, const char *name, std::set<std::string> &ids);
    void check_validators(const json &validators, const json &value);
    series_state *open_series(const std::string &step, const json &content);
    void expect_count(const json &content, const char *name, size_t count);
    void run_start(const std::string &, const json &);
    void run_end(const std::string &, const json &);
    void step_start(const std::string &, const json &);
    void step_end(const std::string &, const json &);
    void measurement(const std::string &, const json &);
    void series_start(const std::string &, const json &);
    void series_element(const std::string &, const json &);
    void series_end(const std::string &, const json &);
    void diagnosis(const std::string &, const json &);

    check_outcome outcome = {};
    size_t number = 0;
    uint64_t next_sequence = 0;
    bool started = false, ended = false, failed = false, partial = false;
    std::set<std::string> hardware_ids = {}, software_ids = {};
    std::map<std::string, bool> steps = {}; /* by testStepId: whether it is open */
    std::map<std::string, series_state> series = {};
};

const std::map<std::string_view, stream_checker::handler> stream_checker::handlers = {
    {"testRunStart", &stream_checker::run_start},
    {"testRunEnd", &stream_checker::run_end},
    {"testStepStart", &stream_checker::step_start},
    {"testStepEnd", &stream_checker::step_end},
    {"measurement", &stream_checker::measurement},
    {"measurementSeriesStart", &stream_checker::series_start},
    {"measurementSeriesElement", &stream_checker::series_element},
    {"measurementSeriesEnd", &stream_checker::series_end},
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
    const std::string step = of_step ? text_at(artifact, "testStepId") : "";
    const size_t found = artifact.size() - artifact.count("testStepId");
    for (const auto &[name, content] : artifact.items()) {
        if (!content.is_object())
            continue;
        if (of_step)
            check_step(step, name);
        check_ids(content);
        if (const auto handle = handlers.find(name); handle != handlers.end())
            (this->*handle->second)(step, content);
    }
    if (found != 1)
        add(fmt::format("has {} artifacts; expected one", found));
}

/* Everything about a step stands between its start and its end. */
void stream_checker::check_step(const std::string &step, std::string_view kind)
{
    const auto known = steps.find(step);
    if (!started)
        add("a step before testRunStart");
    if (kind == "testStepStart" || step.empty())
        return;
    if (known == steps.end()) {
        add("step " + named(step) + " was not started");
        steps[step] = true;
    } else if (!known->second) {
        add("step " + named(step) + " has ended");
    }
}

void stream_checker::check_ids(const json &content)
{
    const std::string hardware = text_at(content, "hardwareInfoId");
    if (content.contains("hardwareInfoId") && !hardware_ids.contains(hardware))
        add("hardwareInfoId " + named(hardware) + " is not defined in dutInfo");
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
        if (info.is_object() && info.contains(name) && !ids.insert(text_at(info, name)).second)
            add(std::string(name) + " " + named(text_at(info, name)) + " is defined twice");
}

void stream_checker::run_start(const std::string &, const json &content)
{
    if (started)
        add("a second testRunStart");
    started = true;
    if (const auto parameters = content.find("parameters"); parameters != content.end() && parameters->is_object())
        partial = !text_at(*parameters, "only").empty() || !text_at(*parameters, "skip").empty();
    if (const auto unit = content.find("dutInfo"); unit != content.end() && unit->is_object()) {
        define(*unit, "hardwareInfos", "hardwareInfoId", hardware_ids);
        define(*unit, "softwareInfos", "softwareInfoId", software_ids);
    }
}

void stream_checker::run_end(const std::string &, const json &content)
{
    const std::string status = text_at(content, "status"), result = text_at(content, "result");
    if (!started)
        add("testRunEnd without testRunStart");
    if (std::ranges::none_of(end_pairs,
                             [&](const end_pair &legal) { return legal.status == status && legal.result == result; }))
        add(fmt::format("status {} does not go with result {}", status, result));
    if (result == "PASS" && failed)
        add("the run passed, but a diagnosis is FAIL");
    if (result == "PASS" && partial)
        add(partial_pass);
    for (const auto &[step, open] : steps)
        if (open)
            add("step " + named(step) + " has not ended");
    ended = true;
}

void stream_checker::step_start(const std::string &step, const json &)
{
    if (!step.empty() && !steps.emplace(step, true).second)
        add("testStepId " + named(step) + " was used before");
}

void stream_checker::step_end(const std::string &step, const json &)
{
    steps[step] = false;
    for (const auto &[id, state] : series)
        if (state.open && state.step == step)
            add("measurement series " + named(id) + " of the step has not ended");
}

/* A value is compared with values of its own type only. */
void stream_checker::check_validators(const json &validators, const json &value)
{
    const auto kind = [](const json &one) { return one.is_number() ? "number" : one.type_name(); };
    for (const json &validator : validators)
        if (const auto compared = validator.is_object() ? validator.find("value") : validator.end();
            validator.is_object() && compared != validator.end() && std::string_view(kind(*compared)) != kind(value))
            add(fmt::format("a validator compares a {} with a {}", kind(value), kind(*compared)));
}

static json validators_of(const json &content)
{
    const auto found = content.find("validators");
    return found != content.end() && found->is_array() ? *found : json::array();
}

void stream_checker::measurement(const std::string &, const json &content)
{
    if (content.contains("value"))
        check_validators(validators_of(content), content["value"]);
}

void stream_checker::series_start(const std::string &step, const json &content)
{
    const std::string id = text_at(content, "measurementSeriesId");
    if (!series.emplace(id, series_state{step, 0, true, validators_of(content)}).second)
        add("measurementSeriesId " + named(id) + " was used before");
}

stream_checker::series_state *stream_checker::open_series(const std::string &step, const json &content)
{
    const std::string id = text_at(content, "measurementSeriesId");
    const auto found = series.find(id);
    if (found == series.end() || !found->second.open || found->second.step != step) {
        add("measurement series " + named(id) + " is not open in the step");
        return nullptr;
    }
    return &found->second;
}

void stream_checker::expect_count(const json &content, const char *name, size_t count)
{
    if (const auto found = content.find(name); found != content.end() && *found != count)
        add(fmt::format("{} is {}; expected {}", name, excerpt(*found), count));
}

void stream_checker::series_element(const std::string &step, const json &content)
{
    series_state *const state = open_series(step, content);
    if (state == nullptr)
        return;
    expect_count(content, "index", state->count++);
    if (content.contains("value"))
        check_validators(state->validators, content["value"]);
}

void stream_checker::series_end(const std::string &step, const json &content)
{
    series_state *const state = open_series(step, content);
    if (state == nullptr)
        return;
    expect_count(content, "totalCount", state->count);
    state->open = false;
}

void stream_checker::diagnosis(const std::string &, const json &content)
{
    failed = failed || text_at(content, "type") == "FAIL";
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

} // namespace

check_outcome check_journal(std::string_view text)
{
    stream_checker checker;
    for (const text_line &line : lines_of(text))
        checker.check(line);
    return checker.finish();
}

} // namespace journal
