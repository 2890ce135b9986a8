/* SPDX-License-Identifier: MIT
 *
 * The words for what a check, a port, a step or a run came to: one for each, wherever it is printed.
 */
#ifndef COMMON_VERDICT_WORDS_H
#define COMMON_VERDICT_WORDS_H

namespace common::verdict_word
{

inline constexpr const char *PASS = "PASS";
inline constexpr const char *FAIL = "FAIL";
inline constexpr const char *NOT_TESTED = "NOT TESTED"; /* the test ended before it got to this */
inline constexpr const char *NOT_JUDGED = "NOT JUDGED"; /* measured, nothing judges it */
inline constexpr const char *NO_VERDICT = "NO VERDICT"; /* the station or the service could not come to a verdict */
inline constexpr const char *RETRIED = "RETRIED";       /* failed, then tried again */
inline constexpr const char *NOT_RUN = "NOT RUN";
inline constexpr const char *INCOMPLETE = "INCOMPLETE"; /* the journal ends within it */

/* Of runs alone. */
inline constexpr const char *INTERRUPTED = "INTERRUPTED"; /* ended by a signal */
inline constexpr const char *PARTIAL = "PARTIAL";         /* all chosen steps passed, but it was not the whole plan */

} // namespace common::verdict_word

#endif
