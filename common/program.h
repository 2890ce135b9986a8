/* SPDX-License-Identifier: MIT
 *
 * What a program says of itself: its version, and to other programs why it has no result.
 */
#ifndef COMMON_PROGRAM_H
#define COMMON_PROGRAM_H

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace common
{

enum class exit_code : int;

/* Of the library and the programs, which are released together; as in "0.1.0". */
const char *version();

/* What a program is told in place of a result: one JSON object on several lines with its line end. It has the members,
 * which must be an object, then verdict, exit_code and error, which says why. */
std::string error_json(exit_code code, const std::string &error, const char *verdict, nlohmann::ordered_json members);
std::string error_json(exit_code code, const std::string &error, const char *verdict = "NO VERDICT");

} // namespace common

#endif
