/* SPDX-License-Identifier: MIT
 *
 * The service, and the station's end of a connection to it, byte by byte. Owes nothing to the library's own client
 * side.
 */
#ifndef TESTS_SUPPORT_SERVICE_CLIENT_H
#define TESTS_SUPPORT_SERVICE_CLIENT_H

#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "world.h"

/* A frame as bytes. */
inline std::string frame(uint32_t type, uint32_t payload_size, const std::string &payload = "")
{
    const facmsg_header header = {type, payload_size};
    return std::string(reinterpret_cast<const char *>(&header), sizeof(header)) + payload;
}

/* A new folder with a tmp/ in it: entered now, removed at the end. */
struct temporary_folder {
    temporary_folder()
    {
        if (mkdtemp(path) == nullptr || chdir(path) != 0 || mkdir("tmp", 0700) != 0)
            abort();
    }
    ~temporary_folder()
    {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(path);
    }
    temporary_folder(const temporary_folder &) = delete;
    char path[32] = "/tmp/facmsg_test_XXXXXX";
};

/* A new connection to the service on which these bytes were sent; -1 when there is no service. */
inline int send_to_service(const std::string &bytes)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = {AF_UNIX, FACMSG_SOCKET_PATH};
    if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
        return close(fd), -1;
    send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return fd;
}

/* Everything up to the end of a connection, which it closes. */
inline std::string reply_of(int fd)
{
    std::string all;
    char bytes[4096];
    for (ssize_t got; (got = read(fd, bytes, sizeof(bytes))) > 0;)
        all.append(bytes, static_cast<size_t>(got));
    close(fd);
    return all;
}

inline std::string ask_service(const std::string &request)
{
    return reply_of(send_to_service(request));
}

inline bool wait_for_service()
{
    for (int tries = 0; tries < 1000 && ask_service(frame(19, 0)) != frame(21, 0); tries++)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return ask_service(frame(19, 0)) == frame(21, 0);
}

#endif
