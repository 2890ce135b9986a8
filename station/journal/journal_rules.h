/* SPDX-License-Identifier: MIT
 *
 * The members of a journal's objects: which must be there, which may, and what they hold.
 */
#ifndef JOURNAL_JOURNAL_RULES_H
#define JOURNAL_JOURNAL_RULES_H

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace journal
{

enum class shape { text, boolean, count, number, scalar, timestamp, choice, texts, object, objects };

struct object_rule;

struct member_rule {
    const char *name;
    bool required;
    shape is;
    const object_rule *inner = nullptr; /* of an object, or of each in a list; null: whatever is in it */
    std::span<const std::string_view> choices = {};
};

struct object_rule {
    std::span<const member_rule> members;
    bool has_others = false; /* members that are not listed are allowed */
};

struct artifact_rule {
    std::string_view name;
    const object_rule *rule;
};

extern const object_rule line_rule;
extern const std::span<const artifact_rule> run_artifacts;
extern const std::span<const artifact_rule> step_artifacts;

/* Adds a sentence for each way in which the value is no such object. */
void check_object(const nlohmann::json &value, const object_rule &rule, const std::string &name,
                  std::vector<std::string> &sentences);

/* Enough of a value to recognise it by. */
std::string shown(const nlohmann::json &value);

} // namespace journal

#endif
