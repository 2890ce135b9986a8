/* SPDX-License-Identifier: MIT */
#include "wording.h"

#include <algorithm>

namespace journal
{

using common::run_result;
using common::verdict;

/* The endings of the names, longest first, and the type with which each counts. */
struct ending {
    diagnosis_ending as;
    common::verdict verdict;
};
constexpr ending endings[] = {
    {{"-fail-retried", "UNKNOWN"}, verdict::retried},
    {{"-not-tested", "UNKNOWN"}, verdict::not_tested},
    {{"-unknown", "UNKNOWN"}, verdict::unjudged},
    {{"-pass", "PASS"}, verdict::pass},
    {{"-fail", "FAIL"}, verdict::fail},
    /* of other programs */
    {{"", "PASS"}, verdict::pass},
    {{"", "FAIL"}, verdict::fail},
    {{"", ""}, verdict::unjudged},
};

diagnosis_name read_diagnosis(std::string_view name, std::string_view type)
{
    for (const auto &[known, verdict] : endings)
        if (name.ends_with(known.text) && (known.type == type || known.type.empty()))
            return {std::string(name.substr(0, name.size() - known.text.size())), verdict};
    return {std::string(name), verdict::unjudged};
}

diagnosis_ending ending_of(verdict verdict)
{
    const auto *row = std::ranges::find(endings, verdict, &ending::verdict);
    return row != std::end(endings) ? row->as : ending_of(verdict::unjudged);
}

run_result read_result(std::string_view status, std::string_view result)
{
    if (status == "COMPLETE" && result == "PASS")
        return run_result::pass;
    if (status == "COMPLETE" && result == "FAIL")
        return run_result::fail;
    return status == "SKIP" && result == "NOT_APPLICABLE" ? run_result::unjudged : run_result::no_verdict;
}

verdict prevailing(verdict a, verdict b)
{
    const bool judged_by_one =
        (a == verdict::pass && b == verdict::unjudged) || (a == verdict::unjudged && b == verdict::pass);
    return judged_by_one ? verdict::pass : common::worse(a, b);
}

} // namespace journal
