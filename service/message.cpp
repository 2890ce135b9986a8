/* SPDX-License-Identifier: MIT
 *
 * Frames on their way out: the service's replies, and the client's requests with their answers.
 */
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

#include "facmsg_internal.h"
#include "scoped.h"
#include "server_lib.h"

constexpr useconds_t REPLY_POLL_US = 100000;

/* A frame's size, in 64 bits: a payload_size near 2^32 must not wrap on a 32-bit host. */
static uint64_t frame_size(uint32_t payload_size)
{
    return sizeof(facmsg_header) + uint64_t{payload_size};
}

/* A new frame, or null when memory is short. */
static uint8_t *new_frame(uint32_t type, uint32_t payload_size, const void *payload, const char *op)
{
    const uint64_t size = frame_size(payload_size);
    const auto frame = static_cast<uint8_t *>(size <= PTRDIFF_MAX ? malloc(static_cast<size_t>(size)) : nullptr);
    if (frame == nullptr) {
        log_as(op, LOG_ERROR, "Allocate memory fail.\n");
        return nullptr;
    }
    const facmsg_header header = {type, payload_size};
    memcpy(frame, &header, sizeof(header));
    if (payload_size > 0)
        memcpy(frame + sizeof(header), payload, payload_size);
    log_as(op, LOG_TRACE, "Msg type:%d, payload_size:%d.\n", static_cast<int>(type), static_cast<int>(payload_size));
    return frame;
}

/* Writes a frame in one piece; a peer that has gone is a failure, not a signal. */
static int write_frame(int fd, const uint8_t *frame, uint64_t size, const char *op)
{
    const ssize_t written = uninterrupted([=] { return send(fd, frame, static_cast<size_t>(size), MSG_NOSIGNAL); });
    if (written >= 0 && static_cast<uint64_t>(written) == size)
        return 0;
    log_as(op, LOG_ERROR, "Send msg fail,need bytes: %d,but :%d.\n", static_cast<int>(size), static_cast<int>(written));
    return -1;
}

static bool payload_missing(uint32_t payload_size, const void *payload, const char *op)
{
    if (payload_size == 0 || payload != nullptr)
        return false;
    log_as(op, LOG_ERROR, "Msg format error.\n");
    return true;
}

int facmsg_send(int fd, uint32_t type, uint32_t payload_size, const void *payload)
{
    if (payload_missing(payload_size, payload, __func__))
        return -1;
    const scoped_free frame(new_frame(type, payload_size, payload, __func__));
    if (frame.data == nullptr)
        return -1;
    return write_frame(fd, frame.data, frame_size(payload_size), __func__);
}

static int connect_to_service(int fd)
{
    const sockaddr_un address = service_address();
    return uninterrupted([&] { return connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)); });
}

/* Reads a reply of the same size as the request over the request's frame. */
static int read_reply(int fd, uint8_t *frame, uint64_t size, int attempts, const char *op)
{
    for (int attempt = 0; attempt < attempts; attempt++) {
        usleep(REPLY_POLL_US);
        const ssize_t received = uninterrupted([=] { return read(fd, frame, static_cast<size_t>(size)); });
        if (received > 0 && static_cast<uint64_t>(received) == size)
            return 0;
        if (received > 0) {
            log_as(op, LOG_ERROR, "Server recv fail.\n");
            break;
        }
    }
    log_as(op, LOG_ERROR, "Recv packet timeout.\n");
    return -1;
}

int facmsg_client_send(uint32_t type, uint32_t payload_size, void *payload, int attempts)
{
    if (payload_missing(payload_size, payload, __func__))
        return -1;
    const scoped_close server(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int ret = connect_to_service(server.fd);
    if (ret != 0) {
        log_error("Connect service fail()ret:%d).\n", ret);
        return -1;
    }
    const scoped_free frame(new_frame(type, payload_size, payload, __func__));
    if (frame.data == nullptr || write_frame(server.fd, frame.data, frame_size(payload_size), __func__) != 0 ||
        read_reply(server.fd, frame.data, frame_size(payload_size), attempts, __func__) != 0)
        return -1;
    if (payload_size > 0)
        memcpy(payload, frame.data + sizeof(facmsg_header), payload_size);
    return 0;
}
