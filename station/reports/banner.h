/* SPDX-License-Identifier: MIT
 *
 * Words that can be read from the other end of the bench.
 */
#ifndef REPORTS_BANNER_H
#define REPORTS_BANNER_H

#include <string>
#include <string_view>

namespace reports
{

/* The word in letters five lines high, each line with its line end, indented by two. Knows the letters of the words
 * for results; others are blank. */
std::string banner(std::string_view word);

} // namespace reports

#endif
