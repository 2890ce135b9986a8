/* SPDX-License-Identifier: MIT
 *
 * Looks whether a service answers in the working directory.
 */
#include "service_probe.h"

#include <chrono>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "facmsg.h"

namespace sim
{

namespace
{

struct connection {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);

    connection() = default;
    connection(const connection &) = delete;
    connection &operator=(const connection &) = delete;
    ~connection()
    {
        if (fd >= 0)
            close(fd);
    }

    bool connect_to_service() const
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        static_assert(sizeof FACMSG_SOCKET_PATH <= sizeof address.sun_path);
        memcpy(address.sun_path, FACMSG_SOCKET_PATH, sizeof FACMSG_SOCKET_PATH);
        return fd >= 0 && connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
};

} // namespace

bool service_listens()
{
    return connection().connect_to_service();
}

bool service_answers()
{
    using namespace std::chrono_literals;
    for (int attempt = 0; attempt < 1000; ++attempt) {
        const connection probe;
        facmsg_header reply{};
        if (probe.connect_to_service())
            return facmsg_send(probe.fd, FACMSG_REPLY_UNKNOWN, 0, nullptr) == 0 &&
                   recv(probe.fd, &reply, sizeof reply, MSG_WAITALL) == sizeof reply;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

} // namespace sim
