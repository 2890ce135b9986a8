/* SPDX-License-Identifier: MIT
 *
 * What a journal says of a check, of an attempt at a step, and of a run.
 */
#include "verdict.h"

#include "common/verdict_words.h"

namespace journal
{

namespace word = common::verdict_word;

const char *word_of(verdict judged)
{
    switch (judged) {
    case verdict::pass:
        return word::PASS;
    case verdict::unjudged:
        return word::NOT_JUDGED;
    case verdict::retried:
        return word::RETRIED;
    case verdict::not_run:
        return word::NOT_RUN;
    case verdict::not_tested:
        return word::NOT_TESTED;
    case verdict::fail:
        return word::FAIL;
    case verdict::no_verdict:
        return word::NO_VERDICT;
    case verdict::incomplete:
        return word::INCOMPLETE;
    case verdict::none:
        break;
    }
    return "–";
}

const char *word_of(run_result result)
{
    switch (result) {
    case run_result::pass:
        return word::PASS;
    case run_result::fail:
        return word::FAIL;
    case run_result::no_verdict:
        return word::NO_VERDICT;
    case run_result::interrupted:
        return word::INTERRUPTED;
    case run_result::partial:
        return word::PARTIAL;
    case run_result::unjudged:
        return word::NOT_JUDGED;
    case run_result::incomplete:
        break;
    }
    return word::INCOMPLETE;
}

/* The endings of the names, longest first, and the type with which each counts. */
struct ending {
    std::string_view text, type;
    verdict judged;
};
constexpr ending endings[] = {
    {"-fail-retried", "UNKNOWN", verdict::retried},
    {"-not-tested", "UNKNOWN", verdict::not_tested},
    {"-unknown", "UNKNOWN", verdict::unjudged},
    {"-pass", "PASS", verdict::pass},
    {"-fail", "FAIL", verdict::fail},
    {"", "PASS", verdict::pass},
    {"", "FAIL", verdict::fail},
    {"", "", verdict::unjudged},
};

diagnosis_name read_diagnosis(std::string_view name, std::string_view type)
{
    for (const ending &known : endings)
        if (name.ends_with(known.text) && (known.type == type || known.type.empty()))
            return {std::string(name.substr(0, name.size() - known.text.size())), known.judged};
    return {std::string(name), verdict::unjudged};
}

run_result read_result(std::string_view status, std::string_view result)
{
    if (status == "COMPLETE" && result == "PASS")
        return run_result::pass;
    if (status == "COMPLETE" && result == "FAIL")
        return run_result::fail;
    return status == "SKIP" && result == "NOT_APPLICABLE" ? run_result::unjudged : run_result::no_verdict;
}

} // namespace journal
