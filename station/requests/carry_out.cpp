/* SPDX-License-Identifier: MIT
 *
 * The client call only says that there was no reply; why is found out here.
 */
#include "carry_out.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

#include "common/file.h"
#include "facmsg_protocol.h"
#include "interruption.h"

namespace station
{

/* The socket's file as it is now. A host that starts makes a new one. */
class socket_file
{
  public:
    /* Looks in the current directory, which is the service's. */
    socket_file();
    bool is_missing() const;
    bool is_socket() const;
    bool is_something_else() const;
    bool operator==(const socket_file &other) const;

  private:
    struct stat found_ = {};
    int error_; /* 0, or the error number of looking */
};

struct reason {
    const char *symptom; /* one word */
    std::string sentence;
};

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

/* The likeliest reason, found by looking at the socket and by connecting to it once more: only after a failure, as it
 * costs the service a connection. before is the file as it was when the request was sent. */
static reason why_no_reply(const request &sent, const std::string &directory, const socket_file &before,
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

void enter_directory(const std::string &directory)
{
    if (chdir(directory.c_str()) != 0)
        throw no_reply(
            exit_code::no_verdict, "unreachable",
            fmt::format("cannot enter directory '{}': {}", directory, common::path_fault(errno, "directory")));
}

static int64_t whole_s(milliseconds time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time).count();
}

/* The service does what it was sent, whoever waits for it. */
static no_reply given_up(const exchanged &result, const patience &allowed)
{
    const bool interrupted = result.end == exchange_end::interrupted;
    const exit_code code = interrupted ? noted_code() : exit_code::no_verdict;
    const std::string when_free = result.connected ? ", and will do it once it is free" : "";
    if (result.begun)
        return {code, interrupted ? "interrupted" : "timeout",
                fmt::format("{}; the service goes on with the request it has begun",
                            interrupted ? "interrupted"
                                        : fmt::format("no reply within {} s", whole_s(*allowed.for_reply)))};
    if (interrupted)
        return {code, "interrupted",
                fmt::format("interrupted; the service had not begun the request yet{}", when_free)};
    return {code, "busy",
            fmt::format("the service has not begun the request within {} s: it is still at work for somebody else, or "
                        "hangs{}",
                        whole_s(allowed.for_service), when_free)};
}

/* The client call takes any reply of the right size, so one that belongs to another request shows here: the service
 * sends back what was asked. */
static void check_echo(const command &row, const request &sent, const std::vector<uint8_t> &reply)
{
    for (const option &field : row.options) {
        if (!is_payload_word(field))
            continue;
        const uint32_t request_word = word_at(sent.payload, field.offset);
        const uint32_t reply_word = word_at(reply, field.offset);
        if (reply_word != request_word)
            throw no_reply(exit_code::no_verdict, "no-verdict",
                           fmt::format("the reply does not belong to this request: its {} word is {}; expected {}",
                                       field.name, reply_word, request_word));
    }
}

outcome carry_out(const command &row, const request &task, const std::string &directory, const patience &allowed,
                  const audience &listener)
{
    patience left = allowed;
    const sender send = [&](const request &part, const std::string &done) {
        const socket_file before;
        const exchanged result = exchange(part, left, {[&] { listener.working(done); }, listener.waiting});
        if (result.end == exchange_end::failed) {
            const reason why = why_no_reply(part, directory, before, result);
            throw no_reply(exit_code::no_verdict, why.symptom, why.sentence);
        }
        if (result.end != exchange_end::replied)
            throw given_up(result, allowed);
        check_echo(row, part, result.reply);
        left.for_service -= result.waited;
        if (left.for_reply)
            *left.for_reply -= result.worked;
        return result.reply;
    };
    return row.transfer ? row.transfer(task, send) : row.decode(task, send(task, ""));
}

outcome rehearse(const command &row, const request &task)
{
    check_together(row, task);
    request played = task;
    if (const auto output = played.own.find("--output"); output != played.own.end())
        output->second = "/dev/null";
    if (row.transfer)
        return row.transfer(played, [](const request &part, const std::string &) { return part.payload; });
    return row.decode(played, std::vector<uint8_t>(row.payload_size));
}

} // namespace station
