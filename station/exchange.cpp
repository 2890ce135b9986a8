/* SPDX-License-Identifier: MIT
 *
 * The library's client call blocks until the service answers, so it runs on a thread of its own, which wakes the
 * waiting thread by a signal, as an interruption does: then one wait covers the reply, an interruption and the next
 * tick.
 */
#include "exchange.h"

#include <atomic>
#include <csignal>
#include <memory>
#include <thread>

#include "facmsg.h"
#include "interruption.h"

namespace station
{

/* Shared with the sending thread, which outlives the exchange when nobody waits for it any more. */
struct transfer {
    request sent;
    int status = -1;
    std::atomic<bool> done = false;
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

/* Whether to wait no longer, and why. */
static std::optional<exchange_end> end_of_patience(const patience &allowed)
{
    const auto now = std::chrono::steady_clock::now();
    if (noted_signal() != 0 && now >= noted_at() + allowed.after_signal)
        return exchange_end::interrupted;
    if (now >= allowed.until)
        return exchange_end::timed_out;
    return std::nullopt;
}

exchange_end exchange(request &sent, const patience &allowed, const std::function<void()> &tick)
{
    constexpr timespec tick_interval{0, 200'000'000};
    sigset_t waited;
    sigemptyset(&waited);
    sigaddset(&waited, wake_up);
    const auto job = std::make_shared<transfer>();
    job->sent = sent;
    tick();
    std::thread client = start_sending(job);
    while (!job->done) {
        /* Looked at before a last wait: after a pause of this process the reply may be there already. */
        const auto end = end_of_patience(allowed);
        sigtimedwait(&waited, nullptr, &tick_interval);
        if (end && !job->done) {
            client.detach();
            return *end;
        }
        tick();
    }
    client.join();
    sent.payload = job->sent.payload;
    return job->status == 0 ? exchange_end::replied : exchange_end::failed;
}

} // namespace station
