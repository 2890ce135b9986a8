/* SPDX-License-Identifier: MIT
 *
 * What the parts of the page are made from: words, colours, and the objects and lists that its template takes.
 */
#ifndef REPORTS_PAGE_DATA_H
#define REPORTS_PAGE_DATA_H

#include <kainjow/mustache.hpp>
#include <string>
#include <utility>
#include <vector>

#include "station/journal/run_record.h"

namespace reports
{

using kainjow::mustache::data;
using members = std::vector<std::pair<const char *, data>>;

data object(const members &rows);

/* A list of what make() makes of each element. */
data list(const auto &elements, const auto &make)
{
    data result{data::type::list};
    for (const auto &element : elements)
        result.push_back(make(element));
    return result;
}

/* The colour of a verdict and of a result, as the template names it. */
const char *style_of(common::verdict of);
const char *style_of(common::run_result of);

std::string or_dash(const std::string &text);

/* The front panel, and what is known of its ports. */
void add_panel(data &page, const journal::run_record &run);

/* An attempt at a step. */
data step_data(const journal::attempt &step);

} // namespace reports

#endif
