/* SPDX-License-Identifier: MIT
 *
 * What the station prints, for people or as JSON.
 */
#ifndef STATION_REPORT_H
#define STATION_REPORT_H

#include <string>

#include "station/requests/command.h"

namespace station
{

/* A table with a row per port, then the verdict and the summary. Without a verdict there is only the table, if any: the
 * sentence is for stderr. */
std::string text_report(const outcome &unit, bool colour, size_t columns);

/* One JSON object. */
std::string json_report(const command &row, const request &sent, const outcome &unit);
/* One JSON object for a run that got no reply; row may be null. */
std::string json_error(const command *row, exit_code code, const std::string &sentence);

/* All subcommands, for people and as one JSON object. */
std::string list_text(size_t columns);
std::string list_json();

} // namespace station

#endif
