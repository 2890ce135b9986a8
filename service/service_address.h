/* SPDX-License-Identifier: MIT
 *
 * Where the service listens, for the server and for its clients.
 */
#ifndef SERVICE_SERVICE_ADDRESS_H
#define SERVICE_SERVICE_ADDRESS_H

#include <cstring>
#include <sys/un.h>

#include "facmsg_protocol.h"

static_assert(sizeof(sockaddr_un) == 110);

inline sockaddr_un service_address()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, FACMSG_SOCKET_PATH, sizeof(FACMSG_SOCKET_PATH));
    return address;
}

#endif
