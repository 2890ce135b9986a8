/* SPDX-License-Identifier: MIT
 *
 * The service's socket: where it listens, for the server and its clients; created once, served by one thread, one
 * request at a time.
 */
#ifndef SERVICE_SERVER_LIB_H
#define SERVICE_SERVER_LIB_H

#include <cstdint>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

#include "facmsg_protocol.h"

static_assert(sizeof(sockaddr_un) == 110);

/* FACMSG_SOCKET_PATH, which every process sees from its working directory. */
inline sockaddr_un service_address()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, FACMSG_SOCKET_PATH, sizeof(FACMSG_SOCKET_PATH));
    return address;
}

/* The request buffer, FACMSG_BUFFER_SIZE bytes: header, then payload. Reused for every request without being cleared.
 */
extern uint8_t *facmsg_server_buf;

/* How long an accepted client may take for the header, and then for the payload. */
constexpr int CLIENT_READ_TIMEOUT_S = 5;

/* Allocates the buffer and starts the server thread. 0, or -1 with nothing left behind. */
int facmsg_server_init();

/* The server thread: creates the socket, retrying every second, then serves it for good. */
void *factory_ssa_lib_server_thread_func(void *);

/* Binds FACMSG_SOCKET_PATH, replacing a stale socket file. The listening descriptor, or -1. */
int factory_ssa_lib_socket_create();

/* Reads one request from a connection into facmsg_server_buf and has it answered. Does not close the connection. */
int facmsg_server_recv(int fd);

#endif
