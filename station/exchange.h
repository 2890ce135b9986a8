/* SPDX-License-Identifier: MIT
 *
 * One request and its reply, with the terminal kept informed and an interruption obeyed meanwhile.
 */
#ifndef STATION_EXCHANGE_H
#define STATION_EXCHANGE_H

#include <chrono>
#include <functional>

#include "command.h"

namespace station
{

enum class exchange_end { replied, failed, timed_out, interrupted };

/* How long to wait for a reply. */
struct patience {
    std::chrono::steady_clock::time_point until = std::chrono::steady_clock::time_point::max();
    std::chrono::seconds after_signal{0}; /* from when a signal was noted */
};

/* Sends the request and waits for the reply, which replaces its payload. Calls tick() at once and then a few times a
 * second. The waiting may end before the reply, the service's work does not. Signals have to be watched
 * (interruption.h). */
exchange_end exchange(request &sent, const patience &allowed, const std::function<void()> &tick);

} // namespace station

#endif
