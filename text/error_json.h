/* SPDX-License-Identifier: MIT
 *
 * What a program is told in place of a result: one JSON object, alike for everything that may go wrong.
 */
#ifndef TEXT_ERROR_JSON_H
#define TEXT_ERROR_JSON_H

#include <nlohmann/json.hpp>
#include <string>

namespace text
{

/* An object on one or more lines with its line end: the members, then verdict, exit_code and error, which says why. */
std::string error_json(int exit_code, const std::string &error, const char *verdict = "NO VERDICT",
                       nlohmann::ordered_json members = nlohmann::ordered_json::object());

} // namespace text

#endif
