/* SPDX-License-Identifier: MIT
 *
 * The members of a journal's objects: which must be there, which may, and what they hold.
 */
#include "journal_rules.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/words.h"
#include "timestamp.h"

namespace journal
{

using nlohmann::json;
using enum shape;

constexpr bool must = true, may = false;

constexpr std::string_view statuses[] = {"COMPLETE", "ERROR", "SKIP"};
constexpr std::string_view results[] = {"NOT_APPLICABLE", "PASS", "FAIL"};
constexpr std::string_view diagnosis_types[] = {"PASS", "FAIL", "UNKNOWN"};
constexpr std::string_view severities[] = {"INFO", "DEBUG", "WARNING", "ERROR", "FATAL"};
constexpr std::string_view software_types[] = {"UNSPECIFIED", "FIRMWARE", "SYSTEM", "APPLICATION"};
constexpr std::string_view subcomponent_types[] = {"UNSPECIFIED", "ASIC",     "ASIC-SUBSYSTEM",
                                                   "BUS",         "FUNCTION", "CONNECTOR"};
constexpr std::string_view validator_types[] = {
    "EQUAL",       "NOT_EQUAL",      "LESS_THAN", "LESS_THAN_OR_EQUAL", "GREATER_THAN", "GREATER_THAN_OR_EQUAL",
    "REGEX_MATCH", "REGEX_NO_MATCH", "IN_SET",    "NOT_IN_SET"};

constexpr member_rule version_members[] = {{"major", must, count}, {"minor", must, count}};
constexpr object_rule version{version_members};

constexpr member_rule line_members[] = {{"sequenceNumber", must, count},
                                        {"timestamp", must, timestamp},
                                        {"schemaVersion", may, object, &version},
                                        {"testRunArtifact", may, object},
                                        {"testStepArtifact", may, object}};
const object_rule line_rule{line_members};

constexpr member_rule platform_members[] = {{"info", must, text}};
constexpr object_rule platform{platform_members};

constexpr member_rule software_members[] = {
    {"softwareInfoId", must, text}, {"name", must, text},
    {"version", may, text},         {"revision", may, text},
    {"computerSystem", may, text},  {"softwareType", may, choice, nullptr, software_types}};
constexpr object_rule software{software_members};

constexpr member_rule hardware_members[] = {
    {"hardwareInfoId", must, text}, {"name", must, text},          {"version", may, text},
    {"revision", may, text},        {"location", may, text},       {"serialNumber", may, text},
    {"partNumber", may, text},      {"partType", may, text},       {"manufacturer", may, text},
    {"odataId", may, text},         {"computerSystem", may, text}, {"manufacturerPartNumber", may, text},
    {"manager", may, text}};
constexpr object_rule hardware{hardware_members};

constexpr member_rule unit_members[] = {{"dutInfoId", must, text},
                                        {"name", may, text},
                                        {"platformInfos", may, objects, &platform},
                                        {"softwareInfos", may, objects, &software},
                                        {"hardwareInfos", may, objects, &hardware},
                                        {"metadata", may, object}};
constexpr object_rule unit{unit_members};

constexpr member_rule run_start_members[] = {
    {"name", must, text},         {"version", must, text},          {"commandLine", must, text},
    {"parameters", must, object}, {"dutInfo", must, object, &unit}, {"metadata", may, object}};
constexpr object_rule run_start{run_start_members};

constexpr member_rule run_end_members[] = {{"status", must, choice, nullptr, statuses},
                                           {"result", must, choice, nullptr, results}};
constexpr object_rule run_end{run_end_members};

constexpr member_rule source_members[] = {{"file", must, text}, {"line", must, number}};
constexpr object_rule source{source_members};

constexpr member_rule log_members[] = {
    {"severity", must, choice, nullptr, severities}, {"message", must, text}, {"sourceLocation", may, object, &source}};
constexpr object_rule log{log_members};

constexpr member_rule error_members[] = {{"symptom", must, text},
                                         {"message", may, text},
                                         {"softwareInfoIds", may, texts},
                                         {"sourceLocation", may, object, &source}};
constexpr object_rule error{error_members};

constexpr member_rule step_start_members[] = {{"name", must, text}};
constexpr object_rule step_start{step_start_members};

constexpr member_rule step_end_members[] = {{"status", must, choice, nullptr, statuses}};
constexpr object_rule step_end{step_end_members};

constexpr member_rule validator_members[] = {{"name", may, text},
                                             {"type", must, choice, nullptr, validator_types},
                                             {"value", must, scalar},
                                             {"metadata", may, object}};
constexpr object_rule validator{validator_members};

constexpr member_rule subcomponent_members[] = {{"name", must, text},
                                                {"type", may, choice, nullptr, subcomponent_types},
                                                {"location", may, text},
                                                {"version", may, text},
                                                {"revision", may, text}};
constexpr object_rule subcomponent{subcomponent_members};

constexpr member_rule measurement_members[] = {
    {"name", must, text},          {"value", must, scalar},
    {"unit", may, text},           {"validators", may, objects, &validator},
    {"hardwareInfoId", may, text}, {"subcomponent", may, object, &subcomponent},
    {"metadata", may, object}};
constexpr object_rule measurement{measurement_members};

constexpr member_rule series_start_members[] = {{"measurementSeriesId", must, text},
                                                {"name", must, text},
                                                {"unit", may, text},
                                                {"validators", may, objects, &validator},
                                                {"hardwareInfoId", may, text},
                                                {"subcomponent", may, object, &subcomponent},
                                                {"metadata", may, object}};
constexpr object_rule series_start{series_start_members};

constexpr member_rule series_element_members[] = {{"measurementSeriesId", must, text},
                                                  {"index", must, count},
                                                  {"value", must, scalar},
                                                  {"timestamp", must, timestamp},
                                                  {"metadata", may, object}};
constexpr object_rule series_element{series_element_members};

constexpr member_rule series_end_members[] = {{"measurementSeriesId", must, text}, {"totalCount", must, count}};
constexpr object_rule series_end{series_end_members};

constexpr member_rule diagnosis_members[] = {{"verdict", must, text},
                                             {"type", must, choice, nullptr, diagnosis_types},
                                             {"message", may, text},
                                             {"hardwareInfoId", may, text},
                                             {"subcomponent", may, object, &subcomponent},
                                             {"sourceLocation", may, object, &source}};
constexpr object_rule diagnosis{diagnosis_members};

constexpr member_rule file_members[] = {{"displayName", must, text},   {"uri", must, text},
                                        {"isSnapshot", must, boolean}, {"description", may, text},
                                        {"contentType", may, text},    {"metadata", may, object}};
constexpr object_rule file{file_members, true};

constexpr member_rule extension_members[] = {{"name", must, text}, {"content", must, object}};
constexpr object_rule extension{extension_members, true};

constexpr artifact_rule run_rules[] = {
    {"testRunStart", &run_start}, {"testRunEnd", &run_end}, {"log", &log}, {"error", &error}};
constexpr artifact_rule step_rules[] = {{"testStepStart", &step_start},
                                        {"testStepEnd", &step_end},
                                        {"measurement", &measurement},
                                        {"measurementSeriesStart", &series_start},
                                        {"measurementSeriesElement", &series_element},
                                        {"measurementSeriesEnd", &series_end},
                                        {"diagnosis", &diagnosis},
                                        {"error", &error},
                                        {"file", &file},
                                        {"log", &log},
                                        {"extension", &extension}};
const std::span<const artifact_rule> run_artifacts = run_rules;
const std::span<const artifact_rule> step_artifacts = step_rules;

static bool is_text(const json &value)
{
    return value.is_string();
}

static bool is_texts(const json &value)
{
    return value.is_array() && std::ranges::all_of(value, is_text);
}

static bool is_objects(const json &value)
{
    return value.is_array() && std::ranges::all_of(value, [](const json &one) { return one.is_object(); });
}

static bool is_scalar(const json &value)
{
    return value.is_string() || value.is_boolean() || value.is_number();
}

static bool is_timestamp(const json &value)
{
    return value.is_string() && parse_timestamp(value.get_ref<const std::string &>());
}

/* What holds a shape, in the order of the shapes. */
struct shape_rule {
    bool (*holds)(const json &);
    const char *expected;
};
constexpr shape_rule shapes[] = {
    {is_text, "a text"},
    {[](const json &value) { return value.is_boolean(); }, "true or false"},
    {[](const json &value) { return value.is_number_unsigned(); }, "a whole number from 0"},
    {[](const json &value) { return value.is_number(); }, "a number"},
    {is_scalar, "a text, a number, true or false"},
    {is_timestamp, "a UTC time such as 2026-11-23T08:15:02.114Z"},
    {is_text, "a text"},
    {is_texts, "a list of texts"},
    {[](const json &value) { return value.is_object(); }, "an object"},
    {is_objects, "a list of objects"},
};

std::string shown(const json &value)
{
    constexpr size_t most = 40;
    const std::string text = value.is_structured() ? value.type_name() : value.dump();
    return text.size() > most ? text.substr(0, most) + "..." : text;
}

static void check_member(const json &value, const member_rule &rule, const std::string &name,
                         std::vector<std::string> &sentences)
{
    const shape_rule &wanted = shapes[static_cast<size_t>(rule.is)];
    if (!wanted.holds(value)) {
        sentences.push_back(fmt::format("{} is {}; expected {}", name, shown(value), wanted.expected));
        return;
    }
    if (rule.is == choice && std::ranges::find(rule.choices, value.get<std::string_view>()) == rule.choices.end())
        sentences.push_back(fmt::format("{} is {}; expected {}", name, shown(value),
                                        common::joined({rule.choices.begin(), rule.choices.end()})));
    if (rule.inner != nullptr && rule.is == object)
        check_object(value, *rule.inner, name, sentences);
    if (rule.inner != nullptr && rule.is == objects)
        for (size_t i = 0; i < value.size(); i++)
            check_object(value[i], *rule.inner, fmt::format("{}[{}]", name, i), sentences);
}

void check_object(const json &value, const object_rule &rule, const std::string &name,
                  std::vector<std::string> &sentences)
{
    const std::string prefix = name.empty() ? "" : name + ".";
    for (const member_rule &wanted : rule.members) {
        const auto found = value.find(wanted.name);
        if (found != value.end())
            check_member(*found, wanted, prefix + wanted.name, sentences);
        else if (wanted.required)
            sentences.push_back(prefix + wanted.name + " is missing");
    }
    for (const auto &[other, ignored] : value.items())
        if (!rule.has_others && std::ranges::find(rule.members, other, &member_rule::name) == rule.members.end())
            sentences.push_back(prefix + other + " is no member that a journal has");
}

} // namespace journal
