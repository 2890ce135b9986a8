/* SPDX-License-Identifier: MIT
 *
 * The library's client call, which blocks until the service answers, on a thread of its own.
 */
#ifndef STATION_CLIENT_CALL_H
#define STATION_CLIENT_CALL_H

#include <atomic>
#include <memory>
#include <thread>

#include "command.h"

namespace station
{

class client_call
{
  public:
    /* Begins at once. The thread that calls this is woken up (interruption.h) when it is done. */
    explicit client_call(const request &sent);
    /* Does not wait for a call that is not done. */
    ~client_call();
    client_call(const client_call &) = delete;
    client_call &operator=(const client_call &) = delete;

    bool done() const;
    /* Of a call that is done: whether a reply came, and its payload. */
    bool replied() const;
    const std::vector<uint8_t> &payload() const;

    /* Whether the service has read the whole request. It does so when it is free, one client after the other; until
     * then the request lies in the socket. May be true for an instant before the request is sent. */
    bool is_read();
    /* Whether is_read has ever seen a connection. */
    bool was_connected() const;

  private:
    /* Shared with the thread, which outlives the call when nobody waits for it any more. */
    struct transfer {
        request sent;
        int status = -1;
        std::atomic<bool> done = false;
    };
    std::shared_ptr<transfer> job_;
    std::thread thread_;
    int socket_ = -1; /* the library's */
};

} // namespace station

#endif
