/* SPDX-License-Identifier: MIT
 *
 * Why a request got no reply: the client call only says that there was none.
 */
#include "unreachable.h"

#include <cerrno>
#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

#include "facmsg_protocol.h"

namespace station
{

/* 0, or the error number of connecting. Never waits: a service with a full backlog gives EAGAIN. */
static int connect_error()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    fmt::format_to_n(address.sun_path, sizeof(address.sun_path) - 1, "{}", FACMSG_SOCKET_PATH);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return errno;
    const int status = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    const int error = status == 0 ? 0 : errno;
    close(fd);
    return error;
}

std::string why_no_reply(const request &sent, const std::string &directory)
{
    const std::string where = fmt::format("{} in directory '{}'", FACMSG_SOCKET_PATH, directory);
    struct stat file;
    const bool found = stat(FACMSG_SOCKET_PATH, &file) == 0;
    if (!found && errno == ENOENT)
        return fmt::format("there is no socket {}; is the host running with that working directory?", where);
    if (found && !S_ISSOCK(file.st_mode))
        return fmt::format("{} is not a socket; is the host running with that working directory?", where);
    switch (const int error = connect_error()) {
    case 0:
        if (sent.type == FACMSG_10G_40G_SWITCH)
            return "the service does not support this request and sends no reply to it";
        return fmt::format(
            "the service took the request but did not answer with the expected {} bytes: it does not know or "
            "support request type {}, or it closed the connection early",
            sent.payload.size(), sent.type);
    case ECONNREFUSED:
        return fmt::format("nobody listens on {}; the host has gone and left its socket file behind", where);
    case EACCES:
        return fmt::format("permission denied on {}; only the user that runs the host may connect", where);
    default:
        return fmt::format("cannot connect to {}: {}", where, std::generic_category().message(error));
    }
}

} // namespace station
