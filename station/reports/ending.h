/* SPDX-License-Identifier: MIT
 *
 * How a run ended: a few words under its result.
 */
#ifndef REPORTS_ENDING_H
#define REPORTS_ENDING_H

#include <string>

#include "station/journal/run_record.h"

namespace reports
{

/* What keeps it from being a run of the whole plan: by which signal it was interrupted, how many steps were run; empty
 * when nothing does. */
std::string shortfall_text(const journal::run_record &run);

bool is_whole_plan(const journal::run_record &run);

/* What the result comes to, such as "5 failed checks" or "every step passed". */
std::string headline(const journal::run_record &run);

} // namespace reports

#endif
