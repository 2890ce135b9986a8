/* SPDX-License-Identifier: MIT
 *
 * The run for build servers: one case for each check at each port, and one for each step, whatever the number of
 * attempts. A failure is the unit's, an error the station's.
 */
#include <fmt/format.h>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <span>

#include "report_parts.h"
#include "reports.h"

namespace reports
{

using common::run_result;
using common::verdict;

struct string_writer : pugi::xml_writer {
    std::string text;
    void write(const void *data, size_t size) override
    {
        text.append(static_cast<const char *>(data), size);
    }
};

/* What one attempt says of a case. */
struct statement {
    int64_t attempt;
    common::verdict verdict;
    std::string sentence;
    const char *word = word_of(verdict);
};

/* A check at a port, or a step as a whole, with all attempts at it; the last one counts. */
struct test_case {
    std::string class_name, name;
    std::vector<statement> attempts;
    double seconds = 0;
};

/* The suite as it fills; every case gets a name of its own. */
class suite
{
  public:
    explicit suite(pugi::xml_node node) : cases(node) {}
    void add(const test_case &entry);
    void add_run(const std::string &name, verdict of, const std::string &sentence, const char *word);
    size_t tests = 0, failures = 0, errors = 0, skipped = 0;

  private:
    pugi::xml_node cases;
    std::set<std::pair<std::string, std::string>> names = {};
};

static const char *element_of(verdict of)
{
    switch (of) {
    case verdict::pass:
        return nullptr;
    case verdict::fail:
        return "failure";
    case verdict::no_verdict:
    case verdict::incomplete:
        return "error";
    case verdict::none:
    case verdict::unjudged:
    case verdict::retried:
    case verdict::not_run:
    case verdict::not_tested:
        break;
    }
    return "skipped";
}

static std::string seconds_text(double seconds)
{
    return fmt::format("{:.3f}", seconds);
}

/* What earlier attempts found wrong. */
static std::string history_of(const std::vector<statement> &attempts)
{
    std::string text;
    for (const statement &one : std::span(attempts).first(attempts.size() - 1))
        if (one.verdict != verdict::pass)
            text += fmt::format("attempt {}: {}: {}\n", one.attempt, one.word,
                                one.sentence.empty() ? NO_REASON : one.sentence);
    return text;
}

void suite::add(const test_case &entry)
{
    std::string own_name = entry.name;
    for (int i = 2; !names.emplace(entry.class_name, own_name).second; i++)
        own_name = fmt::format("{} ({})", entry.name, i);
    auto node = cases.append_child("testcase");
    node.append_attribute("classname") = entry.class_name.c_str();
    node.append_attribute("name") = own_name.c_str();
    node.append_attribute("time") = seconds_text(entry.seconds).c_str();
    tests++;
    const statement &last = entry.attempts.back();
    if (const char *element = element_of(last.verdict)) {
        const std::string sentence = last.sentence.empty() ? NO_REASON : last.sentence;
        const bool is_plain = last.verdict == verdict::fail || last.verdict == verdict::no_verdict;
        const std::string message = is_plain ? sentence : fmt::format("{}: {}", last.word, sentence);
        auto reason = node.append_child(element);
        reason.append_attribute("message") = message.c_str();
        reason.append_attribute("type") = last.word;
        reason.text().set(message.c_str());
        (last.verdict == verdict::fail ? failures : element == std::string_view("error") ? errors : skipped)++;
    }
    if (const std::string history = history_of(entry.attempts); !history.empty())
        node.append_child("system-out").text().set(history.c_str());
}

void suite::add_run(const std::string &name, verdict of, const std::string &sentence, const char *word)
{
    add({"run", name, {{1, of, sentence, word}}});
}

static std::string class_of(const std::string &step, const common::place &where)
{
    std::string name = step + "." + where.id;
    for (char &letter : name)
        letter = letter == ' ' ? '_' : letter;
    return name;
}

static std::string all_errors(const journal::attempt &attempt)
{
    std::string text;
    for (const journal::fault &wrong : attempt.errors)
        text += fmt::format("{}{}: {}", text.empty() ? "" : "\n", wrong.symptom, wrong.message);
    return text.empty() ? attempt.summary : text;
}

/* All attempts at a step, in order. */
using attempts = std::span<const journal::attempt *const>;

static void add_step(suite &cases, attempts step)
{
    test_case whole{class_of(step.front()->step, {"unit", "unit"}), "step", {}};
    for (const journal::attempt *attempt : step) {
        const bool is_error = attempt->verdict == verdict::no_verdict;
        whole.attempts.push_back(
            {attempt->number, attempt->verdict, is_error ? all_errors(*attempt) : attempt->summary});
        whole.seconds += time_of(*attempt).value_or(0);
    }
    cases.add(whole);
}

/* A check that an attempt makes twice at a port makes two cases. */
static void add_checks(suite &cases, attempts step)
{
    std::vector<test_case> checks;
    std::map<std::tuple<std::string, std::string, int>, size_t> index;
    for (const journal::attempt *attempt : step) {
        std::map<std::pair<std::string, std::string>, int> counts;
        for (const common::check &one : attempt->checks) {
            if (is_measurement(one))
                continue;
            const std::string class_name = class_of(attempt->step, one.where);
            const auto [row, is_new] =
                index.emplace(std::tuple(class_name, one.name, counts[{class_name, one.name}]++), checks.size());
            if (is_new)
                checks.push_back({class_name, one.name, {}});
            checks[row->second].attempts.push_back({attempt->number, one.verdict, one.sentence});
        }
    }
    for (const test_case &one : checks)
        cases.add(one);
}

static void add_steps(suite &cases, const journal::run_record &run)
{
    std::map<std::string, std::vector<const journal::attempt *>> steps;
    for (const journal::attempt &attempt : run.attempts) {
        auto &step = steps[attempt.step];
        step.push_back(&attempt);
        if (attempt.is_last) {
            add_step(cases, step);
            add_checks(cases, step);
            step.clear();
        }
    }
}

/* No run may look better here than it ended, whatever its steps say. */
static void add_end(suite &cases, const journal::run_record &run)
{
    const auto add = [&](verdict of, const std::string &sentence) {
        cases.add_run("end", of, sentence, word_of(run.result));
    };
    if (run.result == run_result::incomplete)
        add(verdict::no_verdict, NO_END);
    else if (run.result == run_result::interrupted)
        add(verdict::no_verdict, headline(run));
    else if (run.result == run_result::no_verdict && cases.errors == 0)
        add(verdict::no_verdict, "The run ended with an error that no step explains.");
    else if (run.result == run_result::fail && cases.failures == 0)
        add(verdict::fail, UNEXPLAINED_FAILURE);
    else if (run.result == run_result::unjudged || cases.tests == 0)
        add(verdict::unjudged, "Nothing in the run was judged.");
    if (run.partial)
        cases.add_run("whole plan", verdict::not_run, shortfall_text(run), word_of(run_result::partial));
}

static void add_properties(pugi::xml_node node, const journal::run_record &run)
{
    const std::pair<const char *, std::string> properties[] = {
        {"serial", run.serial},
        {"product", run.product},
        {"plan", run.plan},
        {"plan_version", run.version},
        {"operator", run.operator_name},
        {"station", run.station},
        {"run_id", run.run_id},
        {"result", word_of(run.result)},
        {"whole_plan", is_whole_plan(run) ? "true" : "false"},
    };
    auto list = node.append_child("properties");
    for (const auto &[name, value] : properties) {
        auto property = list.append_child("property");
        property.append_attribute("name") = name;
        property.append_attribute("value") = value.c_str();
    }
}

static void add_counts(pugi::xml_node node, const suite &cases, const journal::run_record &run)
{
    node.append_attribute("tests") = cases.tests;
    node.append_attribute("failures") = cases.failures;
    node.append_attribute("errors") = cases.errors;
    node.append_attribute("skipped") = cases.skipped;
    node.append_attribute("time") = seconds_text(seconds_between(run.start, run.end).value_or(0)).c_str();
}

std::string junit_text(const journal::run_record &run)
{
    pugi::xml_document document;
    auto suites = document.append_child("testsuites");
    auto node = suites.append_child("testsuite");
    const std::string name = fmt::format("{} {}", run.plan.empty() ? "run" : run.plan, run.serial);
    suites.append_attribute("name") = name.c_str();
    node.append_attribute("name") = name.c_str();
    if (run.start.ms)
        node.append_attribute("timestamp") = run.start.text.substr(0, 19).c_str();
    node.append_attribute("hostname") = run.station.c_str();
    add_properties(node, run);
    suite cases(node);
    add_steps(cases, run);
    for (const journal::fault &wrong : run.errors)
        cases.add_run(wrong.symptom, verdict::no_verdict, wrong.message, word_of(verdict::no_verdict));
    add_end(cases, run);
    add_counts(suites, cases, run);
    add_counts(node, cases, run);
    string_writer writer;
    document.save(writer, "  ", pugi::format_default, pugi::encoding_utf8);
    return writer.text;
}

} // namespace reports
