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

class service_client
{
  public:
    service_client() : fd(socket(AF_UNIX, SOCK_STREAM, 0))
    {
        const sockaddr_un address = {AF_UNIX, FACMSG_SOCKET_PATH};
        connected = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    }
    ~service_client()
    {
        close(fd);
    }
    service_client(const service_client &) = delete;

    service_client &send(const std::string &bytes)
    {
        ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        return *this;
    }
    service_client &end() /* nothing more will be sent */
    {
        shutdown(fd, SHUT_WR);
        return *this;
    }
    std::string reply() /* everything up to the end of the connection */
    {
        std::string all;
        char bytes[4096];
        for (ssize_t got; (got = read(fd, bytes, sizeof(bytes))) > 0;)
            all.append(bytes, static_cast<size_t>(got));
        return all;
    }

    bool connected;

  private:
    const int fd;
};

/* Sends a whole request and reads the reply; "" when there is no service. */
inline std::string ask_service(const std::string &request)
{
    return service_client().send(request).reply();
}

inline bool wait_for_service()
{
    for (int tries = 0; tries < 1000; tries++) {
        if (ask_service(frame(19, 0)) == frame(21, 0))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

#endif
