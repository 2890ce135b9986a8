/* SPDX-License-Identifier: MIT */
#include "verdict.h"

#include <algorithm>
#include <iterator>

namespace common
{

/* Each counts rather than those before it. */
static constexpr verdict RANKING[] = {
    verdict::none,       /* says nothing that another could not outweigh */
    verdict::pass,       /* certain, and enough */
    verdict::unjudged,   /* a thing of which a part was not judged is not known to be good */
    verdict::retried,    /* failed once; a later attempt concludes */
    verdict::not_run,    /* nothing is known of it, as somebody chose */
    verdict::not_tested, /* nothing is known of it, as something went wrong before */
    verdict::fail,       /* certain: whatever else is unknown does not make it good */
    verdict::no_verdict, /* what says so cannot be believed, not even its failures */
    verdict::incomplete, /* nobody knows what else would have been said */
};

static auto rank_of(verdict of)
{
    return std::ranges::find(RANKING, of) - std::begin(RANKING);
}

bool is_worse(verdict a, verdict b)
{
    return rank_of(a) > rank_of(b);
}

verdict worse(verdict a, verdict b)
{
    return is_worse(a, b) ? a : b;
}

bool is_bad(verdict of)
{
    return of == verdict::fail || of == verdict::no_verdict || of == verdict::incomplete;
}

static constexpr const char *PASS = "PASS", *FAIL = "FAIL", *NOT_JUDGED = "NOT JUDGED", *NO_VERDICT = "NO VERDICT",
                            *INCOMPLETE = "INCOMPLETE";

const char *word_of(verdict of)
{
    switch (of) {
    case verdict::pass:
        return PASS;
    case verdict::unjudged:
        return NOT_JUDGED;
    case verdict::retried:
        return "RETRIED";
    case verdict::not_run:
        return "NOT RUN";
    case verdict::not_tested:
        return "NOT TESTED";
    case verdict::fail:
        return FAIL;
    case verdict::no_verdict:
        return NO_VERDICT;
    case verdict::incomplete:
        return INCOMPLETE;
    case verdict::none:
        break;
    }
    return "–";
}

const char *word_of(run_result of)
{
    switch (of) {
    case run_result::pass:
        return PASS;
    case run_result::fail:
        return FAIL;
    case run_result::no_verdict:
        return NO_VERDICT;
    case run_result::interrupted:
        return "INTERRUPTED";
    case run_result::partial:
        return "PARTIAL";
    case run_result::unjudged:
        return NOT_JUDGED;
    case run_result::incomplete:
        break;
    }
    return INCOMPLETE;
}

exit_code exit_code_of(verdict of)
{
    switch (of) {
    case verdict::pass:
    case verdict::unjudged:
        return exit_code::passed;
    case verdict::fail:
        return exit_code::failed;
    default: /* nothing is known of the unit */
        return exit_code::no_verdict;
    }
}

} // namespace common
