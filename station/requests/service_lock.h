/* SPDX-License-Identifier: MIT
 *
 * One station at a time at one service: a lock beside the service's socket, which ends with its holder however that
 * ends.
 */
#ifndef STATION_SERVICE_LOCK_H
#define STATION_SERVICE_LOCK_H

#include <string>

#include "notice.h"

namespace station
{

/* What a station wants of the service. */
struct claim {
    std::string directory; /* of the service, as it is shown */
    std::string purpose;   /* what others are told */
    bool shared = false;   /* with others that share it */
    bool wait = false;     /* until it is free; else it is taken or not */
};

class service_lock
{
  public:
    /* To be called in the service's directory, with signals watched (interruption.h). Throws no_reply when somebody
     * else holds the lock, or when a signal ends the waiting. A folder in which no lock can be made is told, and keeps
     * nobody from working. */
    service_lock(const claim &terms, notice &message);
    ~service_lock();
    service_lock(const service_lock &) = delete;
    service_lock &operator=(const service_lock &) = delete;

  private:
    service_lock() = default;
    void take(const claim &terms, notice &message);

    int fd_ = -1; /* -1: there is none */
};

/* Throws no_reply when somebody else holds the lock now. May be called in any directory; takes nothing. Not for a
 * process that holds it. */
void refuse_if_held(const std::string &directory);

} // namespace station

#endif
