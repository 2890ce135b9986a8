/* SPDX-License-Identifier: MIT
 *
 * Answers a name that nobody knows with the one that was probably meant.
 */
#ifndef COMMON_NEAREST_H
#define COMMON_NEAREST_H

#include <string>
#include <string_view>
#include <vector>

namespace common
{

/* What to say after a name that is not among the known ones: ", did you mean X?" or, when none is similar,
 * ", expected one of ...". */
std::string expected_one_of(std::string_view given, const std::vector<std::string_view> &known);

/* The names with commas between them. */
std::string joined(const std::vector<std::string_view> &names);

} // namespace common

#endif
