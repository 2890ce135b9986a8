/* SPDX-License-Identifier: MIT
 *
 * A raw client. It owes nothing to the library's own client side.
 */
#include "request_client.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "fake_driver.h"

std::string frame(uint32_t type, uint32_t payload_size, const std::string &payload)
{
    return bytes_of(facmsg_header{type, payload_size}) + payload;
}

temporary_folder::temporary_folder()
{
    if (mkdtemp(path) == nullptr || chdir(path) != 0 || mkdir("tmp", 0700) != 0)
        abort();
}

temporary_folder::~temporary_folder()
{
    std::filesystem::current_path("/");
    std::filesystem::remove_all(path);
}

bool wait_for_service()
{
    for (int tries = 0; tries < 1000; tries++) {
        if (ask_service(frame(19, 0)) == frame(21, 0))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

void start_service()
{
    static const temporary_folder folder;
    std::filesystem::current_path(folder.path);
    const vexa_diag_drv table = fake_table();
    static const bool started = vexa_ssa_regitser_interface(&table) == 0 && wait_for_service();
    if (!started)
        abort();
}

request_client::request_client() : fd(socket(AF_UNIX, SOCK_STREAM, 0))
{
    sockaddr_un address = {AF_UNIX, FACMSG_SOCKET_PATH};
    if (connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0) {
        close(fd);
        fd = -1;
    }
}

std::string read_to_end(int fd)
{
    std::string all;
    char bytes[4096];
    for (ssize_t got; (got = read(fd, bytes, sizeof(bytes))) > 0;)
        all.append(bytes, static_cast<size_t>(got));
    return all;
}

std::string ask_service(const std::string &request)
{
    return request_client().send(request).reply();
}

std::string ask_dispatcher(uint32_t type, const std::string &payload, request_handler handler)
{
    alignas(8) char buffer[FACMSG_BUFFER_SIZE] = {};
    const std::string request = frame(type, static_cast<uint32_t>(payload.size()), payload);
    memcpy(buffer, request.data(), request.size());
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return "no socket pair";
    handler(ends[0], reinterpret_cast<facmsg_request *>(buffer));
    close(ends[0]);
    const std::string reply = read_to_end(ends[1]);
    close(ends[1]);
    return reply;
}
