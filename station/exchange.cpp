/* SPDX-License-Identifier: MIT
 *
 * The library's client call blocks until the service answers, so it runs on a thread of its own, which wakes the
 * waiting thread by a signal: then one wait covers the reply, an interruption and the next tick.
 */
#include "exchange.h"

#include <atomic>
#include <csignal>
#include <memory>
#include <thread>

#include "facmsg.h"

namespace station
{

constexpr int wake_up = SIGUSR1;

/* Shared with the sending thread, which outlives the exchange when that is interrupted. */
struct transfer {
    request sent;
    int status = -1;
    std::atomic<bool> done = false;
};

/* Blocks the signals that end the waiting, for this thread and the threads it starts. The wake-up signal stays blocked
 * for good: it may come after the waiting has ended. */
struct scoped_signal_block {
    sigset_t waited;
    sigset_t previous;

    scoped_signal_block()
    {
        sigemptyset(&waited);
        sigaddset(&waited, wake_up);
        pthread_sigmask(SIG_BLOCK, &waited, nullptr);
        sigaddset(&waited, SIGINT);
        sigaddset(&waited, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &waited, &previous);
    }
    ~scoped_signal_block()
    {
        pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    }
    scoped_signal_block(const scoped_signal_block &) = delete;
    scoped_signal_block &operator=(const scoped_signal_block &) = delete;
};

static std::thread start_sending(const std::shared_ptr<transfer> &job)
{
    return std::thread([job, waiter = pthread_self()] {
        std::vector<uint8_t> &payload = job->sent.payload;
        job->status = facmsg_client_send(job->sent.type, static_cast<uint32_t>(payload.size()), payload.data(), 1);
        job->done = true;
        pthread_kill(waiter, wake_up);
    });
}

exchange_end exchange(request &sent, const std::function<void()> &tick)
{
    constexpr timespec tick_interval{0, 200'000'000};
    const scoped_signal_block signals;
    const auto job = std::make_shared<transfer>();
    job->sent = sent;
    tick();
    std::thread client = start_sending(job);
    while (!job->done) {
        const int number = sigtimedwait(&signals.waited, nullptr, &tick_interval);
        if (number == SIGINT || number == SIGTERM) {
            client.detach();
            return exchange_end::interrupted;
        }
        tick();
    }
    client.join();
    sent.payload = job->sent.payload;
    return job->status == 0 ? exchange_end::replied : exchange_end::failed;
}

} // namespace station
