/* SPDX-License-Identifier: MIT
 *
 * Answers a name that nobody knows with the one that was probably meant.
 */
#ifndef SIM_NAMES_H
#define SIM_NAMES_H

#include <string>
#include <string_view>
#include <vector>

namespace sim
{

/* What to say behind a name that is not among the known ones: ", did you mean X? Expected one of ..." or, when none is
 * similar, ", expected one of ...". */
std::string expected_one_of(std::string_view given, const std::vector<std::string_view> &known);

/* The names with commas between them. */
std::string joined(const std::vector<std::string_view> &names);

} // namespace sim

#endif
