/* SPDX-License-Identifier: MIT
 *
 * Why a request got no reply.
 */
#ifndef STATION_UNREACHABLE_H
#define STATION_UNREACHABLE_H

#include <string>
#include <sys/stat.h>

#include "exchange.h"

namespace station
{

/* The socket's file as it is now. A host that starts makes a new one. */
class socket_file
{
  public:
    /* Looks in the current directory, which is the service's. */
    socket_file();
    bool is_missing() const;
    bool is_socket() const;
    bool is_something_else() const;
    bool operator==(const socket_file &other) const;

  private:
    struct stat found_ = {};
    int error_; /* 0, or the error number of looking */
};

struct reason {
    const char *symptom; /* one word */
    std::string sentence;
};

/* The likeliest reason, found by looking at the socket and by connecting to it once more. before is the file as it was
 * when the request was sent. To be called in the service's directory, which is shown as `directory`, and only after a
 * failure: it costs the service a connection. */
reason why_no_reply(const request &sent, const std::string &directory, const socket_file &before,
                    const exchanged &tried);

} // namespace station

#endif
