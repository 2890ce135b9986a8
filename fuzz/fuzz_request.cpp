/* SPDX-License-Identifier: MIT
 *
 * Any bytes as a connection to the service: received, dispatched and run against a small host. Every connection gets at
 * most one reply, and that is whole. The last byte is the host's plan.
 */
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

#include "facmsg.h"
#include "service/server_lib.h"
#include "small_host.h"

static void check_reply(int fd)
{
    static char reply[2 * FACMSG_BUFFER_SIZE];
    size_t size = 0;
    for (ssize_t got; (got = read(fd, reply + size, sizeof(reply) - size)) > 0;)
        size += static_cast<size_t>(got);
    facmsg_header header = {};
    memcpy(&header, reply, sizeof(header));
    if (size != 0 && (size < sizeof(header) || size != sizeof(header) + header.payload_size))
        abort();
}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    facmsg_server_buf = static_cast<uint8_t *>(malloc(FACMSG_BUFFER_SIZE));
    small_host_start();
    return facmsg_server_buf == nullptr;
}

/* No request type leads to flow pressure: here, the type of its reply does. */
static void serve(int fd, const uint8_t *bytes, size_t size)
{
    facmsg_header header = {};
    memcpy(&header, bytes, size < sizeof(header) ? size : sizeof(header));
    if (header.srv_type != FACMSG_FLOW_REPLY) {
        facmsg_server_recv(fd);
        return;
    }
    memcpy(facmsg_server_buf, bytes, size < FACMSG_BUFFER_SIZE ? size : FACMSG_BUFFER_SIZE);
    facmsg_flow_pressure_fun(fd, reinterpret_cast<facmsg_request *>(facmsg_server_buf));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    int ends[2];
    if (size > size_t{2} * FACMSG_BUFFER_SIZE || socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return -1;
    small_host_reset(size == 0 ? 0 : bytes[size - 1]);
    memset(facmsg_server_buf, 0, FACMSG_BUFFER_SIZE);
    if (send(ends[0], bytes, size, MSG_NOSIGNAL) != static_cast<ssize_t>(size))
        abort();
    shutdown(ends[0], SHUT_WR);
    serve(ends[1], bytes, size);
    close(ends[1]);
    check_reply(ends[0]);
    close(ends[0]);
    return 0;
}
