/* SPDX-License-Identifier: MIT
 *
 * One run as its journal tells it. The reader trusts nothing: members that are missing or of another type are empty.
 */
#include "run_record.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "common/text.h"
#include "journal_check.h"
#include "journal_text.h"
#include "timestamp.h"

namespace journal
{

using nlohmann::json;

static const json &member(const json &object, const char *name)
{
    static const json none;
    const auto found = object.is_object() ? object.find(name) : object.end();
    return object.is_object() && found != object.end() ? *found : none;
}

static std::string text_of(const json &value)
{
    return value.is_string() ? common::printable(value.get_ref<const std::string &>()) : "";
}

static std::string text_at(const json &object, const char *name)
{
    return text_of(member(object, name));
}

static common::value value_at(const json &object, const char *name)
{
    const json &value = member(object, name);
    return value.is_string() ? common::value(text_of(value)) : common::value::of(value);
}

constexpr int most_port = 9999;

static int64_t count_at(const json &object, const char *name, int64_t otherwise)
{
    const json &value = member(object, name);
    return value.is_number_integer() && value > 0 && value < 1000000 ? value.get<int64_t>() : otherwise;
}

static moment moment_at(const json &object, const char *name)
{
    const std::string text = text_at(object, name);
    return {text, parse_timestamp(text)};
}

/* The number at the end of a location such as 7 or PORT7, which can be no more than a few digits long. */
static int port_number(const std::string &location)
{
    constexpr size_t most_digits = 4;
    const size_t begin = location.find_last_not_of("0123456789") + 1;
    const size_t digits = location.size() - begin;
    return digits == 0 || digits > most_digits ? 0 : std::stoi(location.substr(begin));
}

/* A list with commas between the names. */
static std::vector<std::string> names_in(const std::string &list)
{
    std::vector<std::string> names;
    std::istringstream items(list);
    for (std::string name; std::getline(items, name, ',');)
        names.push_back(name);
    return names;
}

namespace
{

class reader
{
  public:
    explicit reader(run_record &record) : run(record) {}
    void read(const json &line);
    void finish();

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
    check measured(const json &) const;
    place where(const json &) const;
    bool is_chosen(const std::string &step) const;
    run_result result_of_skip() const;
    void mark_last();
    void find_contradiction();

    run_record &run;
    moment now = {};
    bool ended = false, interrupted = false;
    std::vector<std::string> only = {}, skipped = {}; /* names of steps that the operator chose, or left out */
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
    if (wrong.symptom != "interrupted") {
        run.errors.push_back(wrong);
        return;
    }
    interrupted = true;
    if (std::smatch named; std::regex_search(wrong.message, named, signal))
        run.signal = named.str();
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
    only = names_in(text_at(parameters, "only"));
    skipped = names_in(text_at(parameters, "skip"));
    run.partial = !only.empty() || !skipped.empty();
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
    const std::string id = text_at(info, "hardwareInfoId");
    const std::string name = text_at(info, "name");
    const place part{id, name.empty() ? id : name, text_at(info, "partType"), port_number(text_at(info, "location"))};
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
    const auto [found, is_new] = steps.emplace(text_at(artifact, "testStepId"), run.attempts.size());
    if (is_new)
        run.attempts.emplace_back().start = now;
    for (const auto &[name, content] : artifact.items())
        if (const auto handler = step_handlers.find(name); handler != step_handlers.end())
            (this->*handler->second)(run.attempts[found->second], content);
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
            if (port.is_number_unsigned() && port <= most_port)
                step.covers.push_back(port.get<int>());
}

place reader::where(const json &content) const
{
    const std::string id = text_at(content, "hardwareInfoId");
    const std::string within = text_at(member(content, "subcomponent"), "name");
    const auto known = places.find(id);
    place at = known != places.end() ? known->second : place{id, id};
    if (within.empty())
        return at.id.empty() ? place{"unit", "unit"} : at;
    at.name += (at.name.empty() ? "" : " ") + within;
    at.id += (at.id.empty() ? "" : ".") + within;
    return at;
}

check reader::measured(const json &content) const
{
    check made{.name = text_at(content, "name"),
               .where = where(content),
               .value = value_at(content, "value"),
               .unit = text_at(content, "unit"),
               .time = now.text};
    if (const json &limits = member(content, "validators"); limits.is_array())
        for (const json &one : limits)
            made.limits.push_back({text_at(one, "type"), value_at(one, "value")});
    return made;
}

void reader::measurement(attempt &step, const json &content)
{
    step.checks.push_back(measured(content));
}

void reader::series_start(attempt &, const json &content)
{
    series.insert_or_assign(text_at(content, "measurementSeriesId"), measured(content));
}

void reader::series_element(attempt &step, const json &content)
{
    const auto known = series.find(text_at(content, "measurementSeriesId"));
    if (known == series.end())
        return;
    check &made = step.checks.emplace_back(known->second);
    made.value = value_at(content, "value");
    made.time = now.text;
}

void reader::diagnosis(attempt &step, const json &content)
{
    const auto [name, verdict] = read_diagnosis(text_at(content, "verdict"), text_at(content, "type"));
    check made{.name = name,
               .verdict = verdict,
               .sentence = text_at(content, "message"),
               .where = where(content),
               .time = now.text};
    if (name != "step" || made.where.id != "unit") {
        step.checks.push_back(std::move(made));
        return;
    }
    step.verdict = verdict;
    step.summary = made.sentence;
}

void reader::error(attempt &step, const json &content)
{
    step.errors.push_back({text_at(content, "symptom"), text_at(content, "message")});
}

void reader::log(attempt &step, const json &content)
{
    step.notes.push_back(text_at(content, "message"));
}

static bool is_pass(run_result result)
{
    return result == run_result::pass || result == run_result::partial;
}

/* The verdict of a step about which no line says one: that of its worst check. */
static verdict worst_check(const attempt &step)
{
    verdict worst = verdict::none;
    for (const check &made : step.checks)
        worst = prevailing(worst, made.verdict);
    return worst == verdict::none ? verdict::unjudged : worst;
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
        step.verdict = worst_check(step);
    if (step.verdict == verdict::no_verdict && !step.errors.empty())
        step.summary = step.errors.front().message;
    if (step.verdict == verdict::not_run && !step.notes.empty())
        step.summary = step.notes.back();
}

bool reader::is_chosen(const std::string &step) const
{
    const auto among = [&](const std::vector<std::string> &names) {
        return std::ranges::any_of(names, [&](const std::string &name) { return is_meant(name, step); });
    };
    return (only.empty() || among(only)) && !among(skipped);
}

/* A run ends with SKIP when it was interrupted, when what passed is a part of the plan, and when nothing was judged.
 * Every journal with a digest of the plan says that it was interrupted; earlier ones tell it by steps that were chosen
 * and not run. A whole plan whose steps passed would have ended with a pass. */
run_result reader::result_of_skip() const
{
    const auto has_last = [&](const auto &wanted) {
        return std::ranges::any_of(run.attempts, [&](const attempt &step) { return step.is_last && wanted(step); });
    };
    const bool passed = has_last([](const attempt &step) { return step.verdict == verdict::pass; });
    const bool cut_short = run.plan_sha256.empty() && has_last([&](const attempt &step) {
                               return step.verdict == verdict::not_run && is_chosen(step.step);
                           });
    if (interrupted || cut_short || (passed && !run.partial))
        return run_result::interrupted;
    return passed ? run_result::partial : run_result::unjudged;
}

/* A step that is repeated counts its attempts from 1 again. */
void reader::mark_last()
{
    std::map<std::string, attempt *, std::less<>> previous;
    for (attempt &step : run.attempts) {
        attempt *&before = previous[step.step];
        if (before != nullptr)
            before->is_last = step.number <= before->number;
        before = &step;
    }
}

/* A pass that the run's own steps contradict is none. */
void reader::find_contradiction()
{
    const auto wrong = std::ranges::find_if(
        run.attempts, [](const attempt &step) { return is_bad(step.verdict) || worst_check(step) == verdict::fail; });
    if (!is_pass(run.result) || wrong == run.attempts.end())
        return;
    run.errors.push_back(
        {"contradiction", fmt::format("The journal ends with {}, but its step {} is {}.", word_of(run.result),
                                      wrong->step, word_of(common::worse(wrong->verdict, worst_check(*wrong))))});
    run.result = run_result::no_verdict;
}

void reader::finish()
{
    for (attempt &step : run.attempts)
        if (step.end.text.empty()) {
            step.verdict = verdict::incomplete;
            step.summary = "The journal ends during this step.";
        }
    mark_last();
    std::ranges::stable_sort(run.ports, {}, &place::port);
    if (run.result == run_result::unjudged)
        run.result = result_of_skip();
    else if (run.result == run_result::pass && run.partial)
        run.result = run_result::partial;
    find_contradiction();
}

} // namespace

static json parsed(const text_line &line, const std::filesystem::path &file)
{
    json value = json::parse(common::printable(line.text), nullptr, false);
    const bool is_first = line.number == 1;
    if (!value.is_object())
        throw no_journal(fmt::format("{}:{}: not a JSON object, so this is no journal", file.string(), line.number));
    if (is_first && !member(value, "schemaVersion").is_object())
        throw no_journal(fmt::format("{}:1: no schemaVersion, so this is no journal", file.string()));
    return value;
}

/* Lines may have been lost or removed, and with them what failed. A failure is none the less one. That a part of the
 * plan ended as a pass of the whole, as it once did, is put right by calling it what it is. */
static void refuse_damaged_pass(run_record &run, std::string_view text)
{
    if (!is_pass(run.result))
        return;
    const check_outcome found = check_journal(text);
    const auto first =
        std::ranges::find_if(found.problems, [](const problem &one) { return one.sentence != partial_pass; });
    if (first == found.problems.end())
        return;
    run.errors.push_back(
        {"invalid-journal", fmt::format("The journal ends with {}, but is not valid: line {}: {}.", word_of(run.result),
                                        first->line, common::printable(first->sentence))});
    run.result = run_result::no_verdict;
}

run_record read_run(const std::filesystem::path &run_dir)
try {
    const auto file = run_dir / file_name;
    const std::string text = read_text(file);
    run_record run;
    reader journal(run);
    for (const text_line &line : lines_of(text))
        if (line.complete)
            journal.read(parsed(line, file));
    journal.finish();
    refuse_damaged_pass(run, text);
    return run;
} catch (const unreadable_file &why) {
    throw no_journal(why.what());
}

bool is_meant(const std::string &name, const std::string &step)
{
    return step == name || step.starts_with(name + ".");
}

std::optional<double> seconds_between(const moment &start, const moment &end)
{
    if (!start.ms || !end.ms)
        return std::nullopt;
    return static_cast<double>(std::max<int64_t>(0, *end.ms - *start.ms)) / 1000;
}

bool passed_by_retry(const attempt &tried)
{
    return tried.verdict == verdict::pass && tried.number > 1;
}

} // namespace journal
