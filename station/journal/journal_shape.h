/* SPDX-License-Identifier: MIT
 *
 * The shape of a journal's line, by format.schema.json, which is compiled in. Of JSON Schema it takes what that has:
 * $ref (to a definition, beside other keywords), type, title, properties, required, additionalProperties: false, items,
 * enum of texts, minimum, and date-time as the one format.
 */
#ifndef JOURNAL_JOURNAL_SHAPE_H
#define JOURNAL_JOURNAL_SHAPE_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace journal
{

/* A sentence for each way in which the object is no line of a journal, with the place: "log.severity is 7; expected a
 * text". Places within a line's artifact are told without the artifact's own name. */
std::vector<std::string> shape_problems(const nlohmann::json &line);

/* Enough of a value to recognise it by: at most 40 characters of a scalar, the type of anything else. */
std::string excerpt(const nlohmann::json &value);

} // namespace journal

#endif
