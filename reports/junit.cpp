/* SPDX-License-Identifier: MIT
 *
 * The run for build servers: one case for each check at each port, and one for each attempt at a step. A failure is
 * the unit's, an error the station's.
 */
#include <fmt/format.h>
#include <pugixml.hpp>
#include <set>

#include "ending.h"
#include "findings.h"
#include "reports.h"

namespace reports
{

using journal::run_result;
using journal::verdict;

namespace
{

struct string_writer : pugi::xml_writer {
    std::string text;
    void write(const void *data, size_t size) override
    {
        text.append(static_cast<const char *>(data), size);
    }
};

/* The suite as it fills; every case gets a name of its own. */
class suite
{
  public:
    explicit suite(pugi::xml_node node) : cases(node) {}
    void add(const std::string &class_name, const std::string &name, verdict judged, const std::string &sentence,
             double seconds = 0);
    size_t tests = 0, failures = 0, errors = 0, skipped = 0;

  private:
    pugi::xml_node cases;
    std::set<std::pair<std::string, std::string>> taken = {};
};

} // namespace

static const char *element_of(verdict judged)
{
    switch (judged) {
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

void suite::add(const std::string &class_name, const std::string &name, verdict judged, const std::string &sentence,
                double seconds)
{
    std::string own_name = name;
    for (int i = 2; !taken.emplace(class_name, own_name).second; i++)
        own_name = fmt::format("{} ({})", name, i);
    auto node = cases.append_child("testcase");
    node.append_attribute("classname") = class_name.c_str();
    node.append_attribute("name") = own_name.c_str();
    node.append_attribute("time") = seconds_text(seconds).c_str();
    tests++;
    const char *element = element_of(judged);
    if (element == nullptr)
        return;
    const bool is_plain = judged == verdict::fail || judged == verdict::no_verdict;
    const std::string said = sentence.empty() ? no_reason : sentence;
    const std::string shown = is_plain ? said : fmt::format("{}: {}", word_of(judged), said);
    auto reason = node.append_child(element);
    reason.append_attribute("message") = shown.c_str();
    reason.append_attribute("type") = word_of(judged);
    reason.text().set(shown.c_str());
    (judged == verdict::fail ? failures : element == std::string_view("error") ? errors : skipped)++;
}

static std::string class_of(const std::string &step, const journal::place &where)
{
    std::string name = step + "." + where.id;
    for (char &letter : name)
        letter = letter == ' ' ? '_' : letter;
    return name;
}

static std::string all_errors(const journal::attempt &tried)
{
    std::string text;
    for (const journal::fault &wrong : tried.errors)
        text += fmt::format("{}{}: {}", text.empty() ? "" : "\n", wrong.symptom, wrong.message);
    return text.empty() ? tried.summary : text;
}

static void add_attempt(suite &cases, const journal::attempt &tried)
{
    const std::string ending = tried.number == 1 ? "" : fmt::format(" (attempt {})", tried.number);
    const bool is_error = tried.judged == verdict::no_verdict;
    cases.add(class_of(tried.step, {"unit", "unit"}), "step" + ending, tried.judged,
              is_error ? all_errors(tried) : tried.summary, seconds_between(tried.start, tried.end).value_or(0));
    for (const journal::observation &made : tried.checks)
        if (made.is == journal::observation::kind::diagnosis)
            cases.add(class_of(tried.step, made.where), made.name + ending, made.judged, made.message);
}

/* No run may look better here than it ended, whatever its steps say. */
static void add_end(suite &cases, const journal::run_record &run)
{
    if (run.result == run_result::incomplete)
        cases.add("run", "end", verdict::no_verdict, no_end);
    else if (run.result == run_result::no_verdict && cases.errors == 0)
        cases.add("run", "end", verdict::no_verdict, "The run ended with an error that no step explains.");
    else if (run.result == run_result::fail && cases.failures == 0)
        cases.add("run", "end", verdict::fail, unexplained_failure);
    else if (run.result == run_result::unjudged)
        cases.add("run", "end", verdict::unjudged, "Nothing in the run was judged.");
    else if (run.result == run_result::interrupted)
        cases.add("run", "end", verdict::no_verdict, headline(run));
    else if (cases.tests == 0)
        cases.add("run", "end", verdict::not_run, "The run had no steps.");
}

static void add_properties(pugi::xml_node node, const journal::run_record &run)
{
    const std::pair<const char *, const std::string &> properties[] = {
        {"serial", run.serial},        {"product", run.product},        {"plan", run.plan},
        {"plan_version", run.version}, {"operator", run.operator_name}, {"station", run.station},
        {"run_id", run.run_id},
    };
    auto list = node.append_child("properties");
    for (const auto &[name, value] : properties) {
        auto property = list.append_child("property");
        property.append_attribute("name") = name;
        property.append_attribute("value") = value.c_str();
    }
    auto result = list.append_child("property");
    result.append_attribute("name") = "result";
    result.append_attribute("value") = word_of(run.result);
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
    for (const journal::attempt &tried : run.attempts)
        add_attempt(cases, tried);
    for (const journal::fault &wrong : run.errors)
        cases.add("run", wrong.symptom, verdict::no_verdict, wrong.message);
    add_end(cases, run);
    add_counts(suites, cases, run);
    add_counts(node, cases, run);
    string_writer writer;
    document.save(writer, "  ", pugi::format_default, pugi::encoding_utf8);
    return writer.text;
}

} // namespace reports
