/* SPDX-License-Identifier: MIT
 *
 * What the parts of the page are made from.
 */
#include "page_data.h"

namespace reports
{

using common::run_result;
using common::verdict;

data object(const members &named)
{
    data made{data::type::object};
    for (const auto &[name, value] : named)
        made.set(name, value);
    return made;
}

const char *style_of(verdict of)
{
    switch (of) {
    case verdict::pass:
        return "pass";
    case verdict::fail:
        return "fail";
    case verdict::no_verdict:
    case verdict::incomplete:
        return "error";
    case verdict::retried:
        return "warn";
    case verdict::unjudged:
        return "blue";
    case verdict::not_run:
    case verdict::not_tested:
        return "gray";
    case verdict::none:
        break;
    }
    return "none";
}

const char *style_of(run_result of)
{
    switch (of) {
    case run_result::pass:
        return "pass";
    case run_result::fail:
        return "fail";
    case run_result::partial:
        return "warn";
    case run_result::unjudged:
        return "gray";
    case run_result::no_verdict:
    case run_result::interrupted:
    case run_result::incomplete:
        break;
    }
    return "error";
}

std::string or_dash(const std::string &text)
{
    return text.empty() ? "–" : text;
}

} // namespace reports
