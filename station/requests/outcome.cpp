/* SPDX-License-Identifier: MIT
 *
 * The words and exit codes of verdicts.
 */
#include "outcome.h"

namespace station
{

const char *word_of(verdict judged)
{
    switch (judged) {
    case verdict::pass:
        return "PASS";
    case verdict::fail:
        return "FAIL";
    case verdict::unjudged:
        return "NOT JUDGED";
    case verdict::untested:
        return "NOT TESTED";
    case verdict::none:
        break;
    }
    return "NO VERDICT";
}

exit_code exit_code_of(verdict judged)
{
    switch (judged) {
    case verdict::pass:
    case verdict::unjudged:
        return exit_code::passed;
    case verdict::fail:
        return exit_code::failed;
    case verdict::untested:
    case verdict::none:
        break;
    }
    return exit_code::no_verdict;
}

} // namespace station
