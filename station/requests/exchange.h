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

using milliseconds = std::chrono::milliseconds;

/* How long to wait. The service does one request at a time, and begins each when it is done with those before. */
struct patience {
    milliseconds for_service = std::chrono::seconds(busy_timeout_s); /* to begin the request */
    std::optional<milliseconds> for_reply = {}; /* from when it was begun; none: as long as it takes */
    milliseconds after_signal{0};               /* from when a signal was noted, while the request is begun */
};

/* Told at once and then a few times a second where the request is. */
struct onlooker {
    std::function<void()> working; /* the service is at it, or will be in no time */
    std::function<void()> waiting; /* the service is still at work for somebody else */
};

enum class exchange_end { replied, failed, timed_out, interrupted };

struct exchanged {
    exchange_end end;
    bool connected;        /* to the service, at some time */
    bool begun;            /* the service has read the request */
    milliseconds waited{}; /* until it was begun */
    milliseconds worked{}; /* since then */
    std::vector<uint8_t> reply = {};
};

/* Sends the request and waits for the reply. The waiting may end before the reply, the service's work does not. Signals
 * have to be watched (interruption.h). */
exchanged exchange(const request &sent, const patience &allowed, const onlooker &listener);

} // namespace station

#endif
