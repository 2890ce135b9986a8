/* SPDX-License-Identifier: MIT
 *
 * The library's client call on a thread of its own. What it does is seen from its socket, which is one of this
 * process's descriptors: to ask the service itself would cost it a connection.
 */
#include "client_call.h"

#include <csignal>
#include <linux/sockios.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "facmsg.h"
#include "interruption.h"

namespace station
{

static bool leads_to_service(int fd)
{
    sockaddr_un peer{};
    socklen_t size = sizeof(peer) - 1; /* so that the path has its end */
    return getpeername(fd, reinterpret_cast<sockaddr *>(&peer), &size) == 0 && peer.sun_family == AF_UNIX &&
           std::string_view(peer.sun_path).ends_with(FACMSG_SOCKET_PATH);
}

/* -1 while there is no connection: a service whose queue is full lets its clients wait even for that. */
static int find_socket()
{
    constexpr int most_descriptors = 1024; /* the lowest free number is taken, and the program has few */
    for (int fd = 0; fd < most_descriptors; fd++)
        if (leads_to_service(fd))
            return fd;
    return -1;
}

client_call::client_call(const request &sent) : job_(std::make_shared<transfer>())
{
    job_->sent = sent;
    thread_ = std::thread([job = job_, waiter = pthread_self()] {
        std::vector<uint8_t> &payload = job->sent.payload;
        job->status = facmsg_client_send(job->sent.type, static_cast<uint32_t>(payload.size()), payload.data(), 1);
        job->done = true;
        pthread_kill(waiter, wake_up);
    });
}

client_call::~client_call()
{
    if (done())
        thread_.join();
    else
        thread_.detach();
}

bool client_call::done() const
{
    return job_->done;
}

bool client_call::replied() const
{
    return job_->status == 0;
}

const std::vector<uint8_t> &client_call::payload() const
{
    return job_->sent.payload;
}

bool client_call::is_read()
{
    if (socket_ < 0)
        socket_ = find_socket();
    int unread = 0;
    return done() || (socket_ >= 0 && (ioctl(socket_, SIOCOUTQ, &unread) != 0 || unread == 0));
}

bool client_call::was_connected() const
{
    return socket_ >= 0;
}

} // namespace station
