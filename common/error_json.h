/* SPDX-License-Identifier: MIT
 *
 * What a program is told in place of a result: one JSON object, alike for everything that may go wrong.
 */
#ifndef COMMON_ERROR_JSON_H
#define COMMON_ERROR_JSON_H

#include <string>

#include "verdict.h"

namespace common
{

/* An object on several lines with its line end: the name of the request if there is one, then verdict, exit_code and
 * error, which says why. */
std::string error_json(common::exit_code code, const std::string &error, const char *verdict = "NO VERDICT",
                       const char *request = nullptr);

} // namespace common

#endif
