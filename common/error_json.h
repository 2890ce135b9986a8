/* SPDX-License-Identifier: MIT
 *
 * What a program is told in place of a result: one JSON object, alike for everything that may go wrong.
 */
#ifndef COMMON_ERROR_JSON_H
#define COMMON_ERROR_JSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "exit_code.h"

namespace common
{

/* An object on one or more lines with its line end: the members, then verdict, exit_code and error, which says why. */
std::string error_json(common::exit_code code, const std::string &error, const char *verdict = "NO VERDICT",
                       nlohmann::ordered_json members = nlohmann::ordered_json::object());

} // namespace common

#endif
