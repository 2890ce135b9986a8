/* SPDX-License-Identifier: MIT
 *
 * What a program says of itself: its version, and to other programs why it has no result.
 */
#ifndef COMMON_PROGRAM_H
#define COMMON_PROGRAM_H

#include <string>

#include "verdict.h"

namespace common
{

/* Of the library and the programs, which are released together; as in "0.1.0". */
const char *version();

/* What a program is told in place of a result: one JSON object on several lines with its line end. It has the name of
 * the request if there is one, then verdict, exit_code and error, which says why. */
std::string error_json(exit_code code, const std::string &error, const char *verdict = "NO VERDICT",
                       const char *request = nullptr);

} // namespace common

#endif
