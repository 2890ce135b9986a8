/* SPDX-License-Identifier: MIT
 *
 * What the tests of the PoE ports share.
 */
#ifndef STATION_POE_REPORT_H
#define STATION_POE_REPORT_H

#include "port_report.h"

namespace station
{

/* Why the head of a reply allows no verdict, or nothing. runs says how many ascending lists of ports follow each other.
 */
std::string find_poe_doubt(uint32_t result, const uint8_t *ports, uint32_t port_count, int runs);

/* What a failure without a failed port is. */
inline constexpr const char *poe_unexplained = "the service still reports a failure";

} // namespace station

#endif
