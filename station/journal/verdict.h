/* SPDX-License-Identifier: MIT
 *
 * What a journal says of a check, of an attempt at a step, and of a run.
 */
#ifndef JOURNAL_VERDICT_H
#define JOURNAL_VERDICT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace journal
{

/* Of several the later in this list counts. */
enum class verdict {
    none,     /* nothing was said */
    unjudged, /* it was measured, but nothing judges it */
    pass,
    retried, /* failed, and was to be tried again */
    not_run,
    not_tested, /* the test ended before it got to this */
    fail,
    no_verdict, /* the station or the service could not come to a verdict */
    incomplete  /* the journal ends within the attempt */
};

enum class run_result {
    pass,
    fail,
    no_verdict,
    interrupted, /* ended by a signal */
    partial,     /* every step that was chosen passed, but that is not the whole plan */
    unjudged,    /* nothing in it was judged */
    incomplete   /* the journal has no end */
};
constexpr size_t run_results = 7;

/* In capitals: PASS, NOT TESTED; INTERRUPTED. The one word that every report and program has for it. */
const char *word_of(verdict judged);
const char *word_of(run_result result);

/* A diagnosis has a name such as overload-fail-retried and a type: PASS, FAIL or UNKNOWN. */
struct diagnosis_name {
    std::string check;
    verdict judged;
};
diagnosis_name read_diagnosis(std::string_view name, std::string_view type);

/* The result of a run by its end line alone, which has one for all that is unjudged, partial or interrupted: unjudged.
 * A pair that means nothing is no verdict, never a pass. */
run_result read_result(std::string_view status, std::string_view result);

} // namespace journal

#endif
