/* SPDX-License-Identifier: MIT
 *
 * A likely meaning for a mistyped name.
 */
#ifndef STATION_NEAREST_H
#define STATION_NEAREST_H

#include <string>
#include <vector>

namespace station
{

/* "; did you mean 'packet'?" for the known name that is at most three letters away, or the list of all known names. */
std::string did_you_mean(const std::string &found, const std::vector<std::string> &known);

} // namespace station

#endif
