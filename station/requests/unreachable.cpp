/* SPDX-License-Identifier: MIT
 *
 * Why a request got no reply: the client call only says that there was none.
 */
#include "unreachable.h"

#include <cerrno>
#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

#include "common/file.h"
#include "facmsg_protocol.h"

namespace station
{

socket_file::socket_file() : error_(stat(FACMSG_SOCKET_PATH, &found_) == 0 ? 0 : errno) {}

bool socket_file::is_missing() const
{
    return error_ == ENOENT;
}

bool socket_file::is_socket() const
{
    return error_ == 0 && S_ISSOCK(found_.st_mode);
}

bool socket_file::is_something_else() const
{
    return error_ == 0 && !S_ISSOCK(found_.st_mode);
}

bool socket_file::operator==(const socket_file &other) const
{
    return found_.st_dev == other.found_.st_dev && found_.st_ino == other.found_.st_ino &&
           found_.st_ctim.tv_sec == other.found_.st_ctim.tv_sec &&
           found_.st_ctim.tv_nsec == other.found_.st_ctim.tv_nsec;
}

/* A host that is ending may still have its listening socket when the request's is closed already. */
static bool is_closed_soon(int fd)
{
    constexpr int soon_ms = 100;
    pollfd closed{fd, 0, 0};
    return poll(&closed, 1, soon_ms) == 1;
}

/* 0, or the error number of connecting. Never waits long: a service with a full backlog gives EAGAIN. */
static int connect_error(bool once_more = true)
{
    const sockaddr_un address = common::socket_address(FACMSG_SOCKET_PATH);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return errno;
    const int status = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    const int error = status == 0 ? 0 : errno;
    const bool doubtful = status == 0 && once_more && is_closed_soon(fd);
    close(fd);
    return doubtful ? connect_error(false) : error;
}

/* The service closed the connection, or sent something else than the reply: which of them the client call does not
 * say. */
static std::string why_no_answer(const request &sent, milliseconds worked)
{
    if (sent.type == FACMSG_10G_40G_SWITCH)
        return "the service does not support this request and sends no reply to it";
    if (worked >= std::chrono::seconds(1)) /* an unknown type is known at once */
        return fmt::format("the service closed the connection while the request was at work, {} s after it began, or "
                           "did not answer with the expected {} bytes",
                           std::chrono::duration_cast<std::chrono::seconds>(worked).count(), sent.payload.size());
    return fmt::format("the service took the request but did not answer with the expected {} bytes: it does not know "
                       "or support request type {}, or it closed the connection early",
                       sent.payload.size(), sent.type);
}

static std::string why_unreachable(const socket_file &now, int error, const std::string &where)
{
    if (now.is_missing())
        return fmt::format("there is no socket {}; is the host running with that working directory?", where);
    if (now.is_something_else())
        return fmt::format("{} is not a socket; is the host running with that working directory?", where);
    if (error == ECONNREFUSED)
        return fmt::format("nobody listens on {}; the host has gone and left its socket file behind", where);
    if (error == EACCES)
        return fmt::format("permission denied on {}; only the user that runs the host may connect", where);
    return fmt::format("cannot connect to {}: {}", where, std::generic_category().message(error));
}

reason why_no_reply(const request &sent, const std::string &directory, const socket_file &before,
                    const exchanged &tried)
{
    const std::string where = fmt::format("{} in directory '{}'", FACMSG_SOCKET_PATH, directory);
    const socket_file now;
    const int error = now.is_missing() || now.is_something_else() ? ENOENT : connect_error();
    const bool replaced = now.is_socket() && now != before;
    if (tried.connected && (error == ENOENT || error == ECONNREFUSED || replaced))
        return {"host-ended",
                fmt::format("the host ended {}; {}",
                            tried.begun ? "while the request was at work" : "before it began the request",
                            replaced && error == 0 ? "it has been started anew since"
                                                   : fmt::format("nobody listens on {} any more", where))};
    return {"unreachable", error == 0 ? why_no_answer(sent, tried.worked) : why_unreachable(now, error, where)};
}

} // namespace station
