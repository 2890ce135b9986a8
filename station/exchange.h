/* SPDX-License-Identifier: MIT
 *
 * One request and its reply, with the terminal kept informed and an interruption obeyed meanwhile.
 */
#ifndef STATION_EXCHANGE_H
#define STATION_EXCHANGE_H

#include <functional>

#include "command.h"

namespace station
{

enum class exchange_end { replied, failed, interrupted };

/* Sends the request and waits for the reply, which replaces its payload. Calls tick() at once and then a few times a
 * second. SIGINT and SIGTERM end the waiting, not the service's work. */
exchange_end exchange(request &sent, const std::function<void()> &tick);

} // namespace station

#endif
