/* SPDX-License-Identifier: MIT
 *
 * How a journal writes verdicts and results, and what they mean when read.
 */
#ifndef JOURNAL_WORDING_H
#define JOURNAL_WORDING_H

#include <string>
#include <string_view>

#include "common/verdict.h"

namespace journal
{

/* A diagnosis has a name such as overload-fail-retried, and a type: PASS, FAIL or UNKNOWN. */
struct diagnosis_name {
    std::string check;
    common::verdict verdict;
};
diagnosis_name read_diagnosis(std::string_view name, std::string_view type);

/* With what a check's name ends, and its type. What no ending says is written as not judged. */
struct diagnosis_ending {
    std::string_view text, type;
};
diagnosis_ending ending_of(common::verdict verdict);

/* The result of a run by its end line alone, which has one for all that is unjudged, partial or interrupted: unjudged.
 * A pair that means nothing is no verdict, never a pass. */
common::run_result read_result(std::string_view status, std::string_view result);

/* What counts of two checks of one thing: the worse, but that one which only measures judges nothing takes no pass from
 * another. */
common::verdict prevailing(common::verdict a, common::verdict b);

} // namespace journal

#endif
