/* SPDX-License-Identifier: MIT
 *
 * Finds the name that a user probably meant.
 */
#ifndef SIM_NAMES_H
#define SIM_NAMES_H

#include <string>
#include <string_view>
#include <vector>

namespace sim
{

/* ", did you mean X?" with the most similar of the known names; empty when none is similar. */
std::string did_you_mean(std::string_view given, const std::vector<std::string_view> &known);

/* The names with commas between them. */
std::string joined(const std::vector<std::string_view> &names);

} // namespace sim

#endif
