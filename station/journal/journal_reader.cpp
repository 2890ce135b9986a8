/* SPDX-License-Identifier: MIT
 *
 * What the lines of a journal say, one by one. What they come to together is in run_record.
 */
#include "journal_lines.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>

#include "common/text.h"
#include "journal.h"
#include "journal_text.h"

namespace journal
{

constexpr int MOST_PORT = 9999;

class reader
{
  public:
    explicit reader(run_record &record) : run(record) {}
    void read(const json &line);
    run_choice choice = {};

  private:
    using step_handler = void (reader::*)(attempt &, const json &);
    static const std::map<std::string, step_handler, std::less<>> step_handlers;

    void run_start(const json &start);
    void run_error(const fault &wrong);
    void hardware(const json &info);
    void run_artifact(const json &artifact);
    void step_artifact(const json &artifact);
    void start(attempt &, const json &);
    void extension(attempt &, const json &);
    void measurement(attempt &, const json &);
    void series_start(attempt &, const json &);
    void series_element(attempt &, const json &);
    void diagnosis(attempt &, const json &);
    void error(attempt &, const json &);
    void log(attempt &, const json &);
    void end(attempt &, const json &);
    check measurement_of(const json &) const;
    place where(const json &) const;

    run_record &run;
    moment now = {};
    bool ended = false;
    std::map<std::string, place, std::less<>> places = {};
    std::map<std::string, size_t, std::less<>> steps = {}; /* index of the attempt by its testStepId */
    std::map<std::string, check, std::less<>> series = {};
};

const std::map<std::string, reader::step_handler, std::less<>> reader::step_handlers = {
    {"testStepStart", &reader::start},
    {"extension", &reader::extension},
    {"measurement", &reader::measurement},
    {"measurementSeriesStart", &reader::series_start},
    {"measurementSeriesElement", &reader::series_element},
    {"diagnosis", &reader::diagnosis},
    {"error", &reader::error},
    {"log", &reader::log},
    {"testStepEnd", &reader::end},
};

void reader::read(const json &line)
{
    now = moment_at(line, "timestamp");
    if (!ended)
        run.end = now;
    run_artifact(member(line, "testRunArtifact"));
    step_artifact(member(line, "testStepArtifact"));
}

void reader::run_artifact(const json &artifact)
{
    const json &begin = member(artifact, "testRunStart"), &close = member(artifact, "testRunEnd");
    if (begin.is_object())
        run_start(begin);
    if (close.is_object()) {
        run.result = read_result(text_at(close, "status"), text_at(close, "result"));
        ended = true;
    }
    if (const json &wrong = member(artifact, "error"); wrong.is_object())
        run_error({text_at(wrong, "symptom"), text_at(wrong, "message")});
}

void reader::run_error(const fault &wrong)
{
    static const std::regex signal("SIG[A-Z0-9]+");
    if (wrong.symptom != "interrupted")
        return run.errors.push_back(wrong);
    choice.interrupted = true;
    if (std::smatch match; std::regex_search(wrong.message, match, signal))
        run.signal = match.str();
}

void reader::run_start(const json &begin)
{
    const json &unit = member(begin, "dutInfo"), &metadata = member(begin, "metadata"),
               &parameters = member(begin, "parameters");
    run.start = now;
    run.plan = text_at(begin, "name");
    run.version = text_at(begin, "version");
    run.plan_file = text_at(parameters, "plan");
    run.plan_sha256 = text_at(parameters, "plan_sha256");
    choice.only = names_at(parameters, "only");
    choice.skipped = names_at(parameters, "skip");
    run.partial = !choice.only.empty() || !choice.skipped.empty();
    run.product = text_at(unit, "name");
    run.operator_name = text_at(metadata, "operator");
    run.station = text_at(metadata, "station");
    run.run_id = text_at(metadata, "run_id");
    run.station_version = text_at(metadata, "station_version");
    run.library_version = text_at(metadata, "library_version");
    if (const json &parts = member(unit, "hardwareInfos"); parts.is_array())
        std::ranges::for_each(parts, [&](const json &part) { hardware(part); });
}

void reader::hardware(const json &info)
{
    const std::string id = text_at(info, "hardwareInfoId"), name = text_at(info, "name");
    const place part{id, name.empty() ? id : name, text_at(info, "partType"), port_number_at(info, "location")};
    if (run.serial.empty())
        run.serial = text_at(info, "serialNumber");
    const bool is_new = places.emplace(id, part).second;
    if (is_new && part.port > 0)
        run.ports.push_back(part);
}

void reader::step_artifact(const json &artifact)
{
    if (!artifact.is_object())
        return;
    const auto [row, is_new] = steps.emplace(text_at(artifact, "testStepId"), run.attempts.size());
    if (is_new) {
        attempt &step = run.attempts.emplace_back();
        step.start = step.begun = now;
    }
    for (const auto &[name, content] : artifact.items())
        if (const auto handler = step_handlers.find(name); handler != step_handlers.end())
            (this->*handler->second)(run.attempts[row->second], content);
}

void reader::start(attempt &step, const json &content)
{
    step.step = text_at(content, "name");
}

void reader::extension(attempt &step, const json &added)
{
    const json &content = member(added, "content");
    if (member(added, "name") != "facmsg-step")
        return;
    step.request = text_at(content, "request");
    step.number = count_at(content, "attempt", 1);
    step.most = count_at(content, "attempts", 1);
    const json &expected = member(content, "expected_s");
    step.expected_s = expected.is_number() ? std::clamp(expected.get<double>(), 0.0, 1e6) : 0;
    step.judges_ports = member(content, "judges_ports") != false;
    if (const json &covers = member(content, "covers"); covers.is_array())
        for (const json &port : covers)
            if (port.is_number_unsigned() && port <= MOST_PORT)
                step.covers.push_back(port.get<int>());
}

place reader::where(const json &content) const
{
    const std::string id = text_at(content, "hardwareInfoId"),
                      within = text_at(member(content, "subcomponent"), "name");
    const auto row = places.find(id);
    place at = row != places.end() ? row->second : place{id, id};
    if (within.empty())
        return at.id.empty() ? place{"unit", "unit"} : at;
    at.name += (at.name.empty() ? "" : " ") + within;
    at.id += (at.id.empty() ? "" : ".") + within;
    return at;
}

check reader::measurement_of(const json &content) const
{
    check entry{.name = text_at(content, "name"),
                .where = where(content),
                .value = value_at(content, "value"),
                .unit = text_at(content, "unit"),
                .time = now.text};
    if (const json &limits = member(content, "validators"); limits.is_array())
        for (const json &one : limits)
            entry.limits.push_back({text_at(one, "type"), value_at(one, "value")});
    return entry;
}

void reader::measurement(attempt &step, const json &content)
{
    step.checks.push_back(measurement_of(content));
}

void reader::series_start(attempt &, const json &content)
{
    series.insert_or_assign(text_at(content, "measurementSeriesId"), measurement_of(content));
}

void reader::series_element(attempt &step, const json &content)
{
    if (const auto row = series.find(text_at(content, "measurementSeriesId")); row != series.end()) {
        step.checks.push_back(row->second);
        step.checks.back().value = value_at(content, "value");
        step.checks.back().time = now.text;
    }
}

void reader::diagnosis(attempt &step, const json &content)
{
    const auto [name, verdict] = read_diagnosis(text_at(content, "verdict"), text_at(content, "type"));
    check entry{.name = name,
                .verdict = verdict,
                .sentence = text_at(content, "message"),
                .where = where(content),
                .time = now.text};
    if (name == "step" && entry.where.id == "unit") {
        step.verdict = verdict;
        step.summary = entry.sentence;
    } else {
        step.checks.push_back(std::move(entry));
    }
}

void reader::error(attempt &step, const json &content)
{
    step.errors.push_back({text_at(content, "symptom"), text_at(content, "message")});
}

void reader::log(attempt &step, const json &content)
{
    step.notes.push_back(text_at(content, "message"));
    if (step.notes.back() == SERVICE_BEGAN)
        step.begun = now;
}

void reader::end(attempt &step, const json &content)
{
    const std::string status = text_at(content, "status");
    step.end = now;
    if (status == "SKIP")
        step.verdict = verdict::not_run;
    else if (status != "COMPLETE")
        step.verdict = verdict::no_verdict;
    else if (step.verdict == verdict::incomplete)
        step.verdict = verdict::none;
    if (step.verdict == verdict::no_verdict && !step.errors.empty())
        step.summary = step.errors.front().message;
    if (step.verdict == verdict::not_run && !step.notes.empty())
        step.summary = step.notes.back();
}

static json object_of(const text_line &line, const std::string &file)
{
    json value = json::parse(common::printable(line.text), nullptr, false);
    if (!value.is_object())
        throw no_journal(fmt::format("{}:{}: not a JSON object, so this is no journal", file, line.number));
    if (line.number == 1 && !member(value, "schemaVersion").is_object())
        throw no_journal(fmt::format("{}:1: no schemaVersion, so this is no journal", file));
    return value;
}

run_choice read_lines(std::string_view text, const std::string &file, run_record &run)
{
    reader journal(run);
    for (const text_line &line : lines_of(text))
        if (line.complete)
            journal.read(object_of(line, file));
    return journal.choice;
}

} // namespace journal
