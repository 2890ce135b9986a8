/* SPDX-License-Identifier: MIT
 *
 * The server: one thread, one socket, one request at a time.
 */
#include "server_lib.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "facmsg_internal.h"
#include "scoped.h"

constexpr int LISTEN_BACKLOG = 32;

uint8_t *facmsg_server_buf;

/* The host's signals stay with its own threads: each one that landed here would cut a wait short. Those that a fault of
 * the thread itself raises can't be kept away. */
static int start_without_signals(pthread_t *thread, void *(*function)(void *))
{
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
        sigdelset(&blocked, fault);
    sigset_t callers;
    pthread_sigmask(SIG_SETMASK, &blocked, &callers);
    const int error = pthread_create(thread, nullptr, function, nullptr);
    pthread_sigmask(SIG_SETMASK, &callers, nullptr);
    return error;
}

int facmsg_server_init()
{
    facmsg_server_buf = static_cast<uint8_t *>(malloc(FACMSG_BUFFER_SIZE));
    if (facmsg_server_buf == nullptr) {
        log_error("allocate memory for factory server fail.\n");
        return -1;
    }
    pthread_t thread;
    if (start_without_signals(&thread, factory_ssa_lib_server_thread_func) != 0) {
        log_error("Create factory ssa lib server fail.\n");
        free(facmsg_server_buf);
        facmsg_server_buf = nullptr;
        return -1;
    }
    return 0;
}

int factory_ssa_lib_socket_create()
{
    unlink(FACMSG_SOCKET_PATH);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        log_error("create socket fail, errno=%s\n", strerror(errno));
        return -1;
    }
    fchmod(fd, S_IRUSR | S_IWUSR); /* bind gives the socket file this mode: only the owner may connect */
    const sockaddr_un address = service_address();
    if (bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        const int reason = errno;
        close(fd);
        log_error("bind socket[%s] fail, errno=%s\n", address.sun_path, strerror(reason));
        return -1;
    }
    if (listen(fd, LISTEN_BACKLOG) != 0) {
        const int reason = errno;
        close(fd);
        log_error("listen socket[%s] fail, errno=%s\n", address.sun_path, strerror(reason));
        return -1;
    }
    return fd;
}

/* Programs that the host starts must not hold the service's sockets open, hence the SOCK_CLOEXEC here and above. */
static int accept_client(int listener)
{
    return uninterrupted([listener] {
        sockaddr_un peer = {};
        socklen_t length = sizeof(peer);
        return accept4(listener, reinterpret_cast<sockaddr *>(&peer), &length, SOCK_CLOEXEC);
    });
}

static void limit_read_time(int fd)
{
    const timeval limit = {CLIENT_READ_TIMEOUT_S, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
}

void *factory_ssa_lib_server_thread_func(void *)
{
    int listener;
    while ((listener = factory_ssa_lib_socket_create()) < 0) {
        sleep(1);
        log_error("continue to create server socket.\r\n");
    }
    for (;;) {
        const scoped_close client(accept_client(listener));
        if (client.fd < 0) {
            log_error("accept error, rv: %d\n", client.fd);
            continue;
        }
        limit_read_time(client.fd);
        facmsg_server_recv(client.fd);
    }
}

/* A request has to arrive whole: one read each for header and payload. */
static bool read_whole(int fd, uint8_t *to, uint32_t size)
{
    return size == 0 || uninterrupted([=] { return read(fd, to, size); }) == static_cast<ssize_t>(size);
}

int facmsg_server_recv(int fd)
{
    const auto request = reinterpret_cast<facmsg_request *>(facmsg_server_buf);
    if (!read_whole(fd, facmsg_server_buf, sizeof(facmsg_header)))
        return facmsg_send(fd, FACMSG_REPLY_INCOMPLETE, 0, nullptr);
    const uint32_t payload_size = request->header.payload_size;
    if (payload_size > FACMSG_MAX_PAYLOAD || !read_whole(fd, facmsg_server_buf + sizeof(facmsg_header), payload_size))
        return facmsg_send(fd, FACMSG_REPLY_INCOMPLETE, 0, nullptr);
    return facmsg_lib_test_main(fd, request);
}
