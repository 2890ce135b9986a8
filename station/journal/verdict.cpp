/* SPDX-License-Identifier: MIT
 *
 * What a journal says of a check, of an attempt at a step, and of a run.
 */
#include "verdict.h"

namespace journal
{

const char *word_of(verdict judged)
{
    switch (judged) {
    case verdict::pass:
        return "PASS";
    case verdict::unjudged:
        return "NOT JUDGED";
    case verdict::retried:
        return "RETRIED";
    case verdict::not_run:
        return "NOT RUN";
    case verdict::not_tested:
        return "NOT TESTED";
    case verdict::fail:
        return "FAIL";
    case verdict::no_verdict:
        return "NO VERDICT";
    case verdict::incomplete:
        return "INCOMPLETE";
    case verdict::none:
        break;
    }
    return "–";
}

const char *word_of(run_result result)
{
    switch (result) {
    case run_result::pass:
        return "PASS";
    case run_result::fail:
        return "FAIL";
    case run_result::no_verdict:
        return "NO VERDICT";
    case run_result::interrupted:
        return "INTERRUPTED";
    case run_result::partial:
        return "PARTIAL";
    case run_result::unjudged:
        return "NOT JUDGED";
    case run_result::incomplete:
        break;
    }
    return "INCOMPLETE";
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
