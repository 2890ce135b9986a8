/* SPDX-License-Identifier: MIT
 *
 * The words and exit codes of verdicts.
 */
#include "outcome.h"

#include "common/verdict_words.h"

namespace station
{

namespace word = common::verdict_word;

const char *word_of(verdict judged)
{
    switch (judged) {
    case verdict::pass:
        return word::PASS;
    case verdict::fail:
        return word::FAIL;
    case verdict::unjudged:
        return word::NOT_JUDGED;
    case verdict::untested:
        return word::NOT_TESTED;
    case verdict::none:
        break;
    }
    return word::NO_VERDICT;
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
