/* SPDX-License-Identifier: MIT
 *
 * The shape of a journal's line, by format.schema.json, which is compiled in. Of JSON Schema it takes what that has:
 * $ref (to a definition, beside other keywords), type, title, properties, required, additionalProperties: false, items,
 * enum of texts, minimum, and date-time as the one format.
 */
#include "journal_lines.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/words.h"
#include "journal_text.h"

namespace journal
{

extern const char *const format_schema;

using schema = nlohmann::ordered_json;

static const schema &root()
{
    static const schema whole = schema::parse(format_schema);
    return whole;
}

/* The keyword of a schema, or else of what it refers to; null when neither has it. */
static const schema &keyword(const schema &rule, const char *name)
{
    static const schema none;
    const auto own = rule.find(name), link = rule.find("$ref");
    if (own != rule.end())
        return *own;
    return link == rule.end() ? none
                              : keyword(root().at(schema::json_pointer(link->get<std::string>().substr(1))), name);
}

static bool has_text(const schema &list, const std::string &text)
{
    return std::ranges::any_of(list, [&](const schema &one) { return one.get_ref<const std::string &>() == text; });
}

static bool has_type(const json &value, const std::string &type)
{
    return type == "number"    ? value.is_number()
           : type == "integer" ? value.is_number_integer()
           : type == "boolean" ? value.is_boolean()
                               : type == value.type_name();
}

static bool has_type(const json &value, const schema &types)
{
    return types.is_array() ? std::ranges::any_of(
                                  types, [&](const schema &type) { return has_type(value, type.get<std::string>()); })
                            : has_type(value, types.get<std::string>());
}

static bool holds(const json &value, const schema &rule)
{
    const schema &type = keyword(rule, "type"), &items = keyword(rule, "items"), &minimum = keyword(rule, "minimum");
    const schema &choices = keyword(rule, "enum");
    if (!choices.is_null())
        return value.is_string() && has_text(choices, value.get_ref<const std::string &>());
    return has_type(value, type) && (minimum.is_null() || value >= minimum.get<int64_t>()) &&
           (keyword(rule, "format").is_null() || parse_timestamp(value.get_ref<const std::string &>())) &&
           (items.is_null() ||
            std::ranges::all_of(value, [&](const json &one) { return has_type(one, keyword(items, "type")); }));
}

static std::string expectation(const schema &rule)
{
    const schema &title = keyword(rule, "title"), &choices = keyword(rule, "enum"), &items = keyword(rule, "items");
    if (!choices.is_null())
        return common::joined(choices.get<std::vector<std::string_view>>());
    if (!items.is_null())
        return keyword(items, "type") == "object" ? "a list of objects" : "a list of texts";
    return title.is_null() ? "an object" : title.get<std::string>();
}

class shape_checker
{
  public:
    void check(const json &value, const schema &rule, const std::string &place);
    void check_members(const json &object, const schema &rule, const std::string &prefix);
    std::vector<std::string> sentences = {};
};

void shape_checker::check(const json &value, const schema &rule, const std::string &place)
{
    const schema &items = keyword(rule, "items");
    if (!holds(value, rule)) {
        sentences.push_back(fmt::format("{} is {}; expected {}", place, excerpt(value), expectation(rule)));
        return;
    }
    if (value.is_object())
        check_members(value, rule, place + ".");
    for (size_t i = 0; !items.is_null() && i < value.size(); i++)
        check(value[i], items, fmt::format("{}[{}]", place, i));
}

void shape_checker::check_members(const json &object, const schema &rule, const std::string &prefix)
{
    const schema &members = keyword(rule, "properties"), &required = keyword(rule, "required"),
                 &names = keyword(rule, "propertyNames");
    for (const auto &[name, member] : members.items())
        if (const auto value = object.find(name); value != object.end())
            check(*value, member, prefix + name);
        else if (has_text(required, name))
            sentences.push_back(prefix + name + " is missing");
    for (const auto &[name, value] : object.items())
        if (keyword(rule, "additionalProperties") == false && !members.contains(name))
            sentences.push_back(prefix + name + " is no " +
                                (names.is_null() ? "member that a journal has" : names["title"].get<std::string>()));
}

std::vector<std::string> shape_problems(const json &line)
{
    shape_checker checker;
    checker.check_members(line, root(), "");
    for (std::string &sentence : checker.sentences)
        for (const std::string_view artifact : {"testRunArtifact.", "testStepArtifact."})
            if (sentence.starts_with(artifact))
                sentence.erase(0, artifact.size());
    return std::move(checker.sentences);
}

std::string excerpt(const json &value)
{
    constexpr size_t most = 40;
    const std::string text = value.is_structured() ? value.type_name() : value.dump();
    return text.size() > most ? text.substr(0, most) + "..." : text;
}

} // namespace journal
