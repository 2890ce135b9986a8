/* SPDX-License-Identifier: MIT
 *
 * Times in words.
 */
#ifndef TEXT_DURATION_H
#define TEXT_DURATION_H

#include <string>

namespace common
{

/* "5 s", "7.3 s", "26 s", "4 min", "4 min 12 s", "2 h 5 min" */
std::string duration_text(double seconds);

} // namespace common

#endif
