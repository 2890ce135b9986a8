/* SPDX-License-Identifier: MIT
 *
 * Why a request got no reply.
 */
#ifndef STATION_UNREACHABLE_H
#define STATION_UNREACHABLE_H

#include <string>

#include "command.h"

namespace station
{

/* One sentence with the likeliest reason, found by looking at the socket and by connecting to it once more. To be
 * called in the service's directory, which is shown as `directory`, and only after a failure: it costs the service a
 * connection. */
std::string why_no_reply(const request &sent, const std::string &directory);

} // namespace station

#endif
