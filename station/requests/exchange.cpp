/* SPDX-License-Identifier: MIT
 *
 * One wait covers the reply, an interruption and the next look at the request. The time of a request counts from when
 * the service has read it, which is seen from the library's socket, one of this process's descriptors: to ask the
 * service itself would cost it a connection.
 */
#include "exchange.h"

#include <atomic>
#include <csignal>
#include <linux/sockios.h>
#include <memory>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

#include "facmsg.h"
#include "interruption.h"

namespace station
{

/* The library's client call, which blocks until the service answers, on a thread of its own. */
class client_call
{
  public:
    /* Begins at once. The thread that calls this is woken up (interruption.h) when it is done. */
    explicit client_call(const request &sent);
    /* Does not wait for a call that is not done. */
    ~client_call();
    client_call(const client_call &) = delete;
    client_call &operator=(const client_call &) = delete;

    bool done() const;
    /* Of a call that is done: whether a reply came, and its payload. */
    bool replied() const;
    const std::vector<uint8_t> &payload() const;

    /* Whether the service has read the whole request. It does so when it is free, one client after the other; until
     * then the request lies in the socket. May be true for an instant before the request is sent. */
    bool is_read();
    /* Whether is_read has ever seen a connection. */
    bool was_connected() const;

  private:
    /* Shared with the thread, which outlives the call when nobody waits for it any more. */
    struct transfer {
        request sent;
        int status = -1;
        std::atomic<bool> done = false;
    };
    std::shared_ptr<transfer> job_;
    std::thread thread_;
    int socket_ = -1; /* the library's */
};

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
        pthread_kill(waiter, WAKE_UP);
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

using clock = std::chrono::steady_clock;

/* What is known of a request at one moment. */
struct course {
    clock::time_point start = clock::now();
    clock::time_point last_look = start;
    bool begun = false;
    clock::time_point begun_at = {};

    /* It was begun at the last look or after that. */
    void look(client_call &call)
    {
        const auto now = clock::now();
        const bool read = call.is_read();
        if (read && !begun)
            begun_at = last_look;
        begun = read;
        last_look = now;
    }
    milliseconds waited() const
    {
        return std::chrono::duration_cast<milliseconds>((begun ? begun_at : last_look) - start);
    }
    milliseconds worked() const
    {
        return std::chrono::duration_cast<milliseconds>(begun ? last_look - begun_at : clock::duration(0));
    }
    /* A service that is free reads at once, even on a busy machine. */
    bool behind_others() const
    {
        return !begun && waited() >= std::chrono::seconds(2);
    }
};

/* Whether to wait no longer, and why. */
static std::optional<exchange_end> end_of_patience(const course &run, const patience &allowed)
{
    if (noted_signal() != 0 && (run.behind_others() || run.last_look >= noted_at() + allowed.after_signal))
        return exchange_end::interrupted;
    if (run.begun ? allowed.for_reply && run.worked() >= *allowed.for_reply : run.waited() >= allowed.for_service)
        return exchange_end::timed_out;
    return std::nullopt;
}

exchanged exchange(const request &sent, const patience &allowed, const onlooker &listener)
{
    constexpr milliseconds tick_interval{200};
    constexpr milliseconds first_interval{20}; /* a request is begun sooner than anybody reads */
    course run;
    client_call call(sent);
    for (bool first = true; !call.done(); first = false) {
        run.look(call);
        (run.behind_others() ? listener.waiting : listener.working)();
        /* Looked at before a last wait: after a pause of this process the reply may be there already. */
        const auto end = end_of_patience(run, allowed);
        wait_for_wake_up(first ? first_interval : tick_interval);
        if (end && !call.done())
            return {*end, call.was_connected(), run.begun, run.waited(), run.worked()};
    }
    if (call.replied()) {
        run.look(call);
        listener.working();
    }
    return {call.replied() ? exchange_end::replied : exchange_end::failed,
            call.was_connected(),
            run.begun,
            run.waited(),
            run.worked(),
            call.payload()};
}

} // namespace station
