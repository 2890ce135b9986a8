/* SPDX-License-Identifier: MIT
 *
 * One wait covers the reply, an interruption and the next look at the request. The time of a request counts from when
 * the service has read it.
 */
#include "exchange.h"

#include "client_call.h"
#include "interruption.h"

namespace station
{

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

exchanged exchange(const request &sent, const patience &allowed, const onlooker &shown)
{
    constexpr milliseconds tick_interval{200};
    constexpr milliseconds first_interval{20}; /* a request is begun sooner than anybody reads */
    course run;
    client_call call(sent);
    for (bool first = true; !call.done(); first = false) {
        run.look(call);
        (run.behind_others() ? shown.waiting : shown.working)();
        /* Looked at before a last wait: after a pause of this process the reply may be there already. */
        const auto end = end_of_patience(run, allowed);
        wait_for_wake_up(first ? first_interval : tick_interval);
        if (end && !call.done())
            return {*end, call.was_connected(), run.begun, run.waited(), run.worked()};
    }
    if (call.replied()) {
        run.look(call);
        shown.working();
    }
    return {call.replied() ? exchange_end::replied : exchange_end::failed,
            call.was_connected(),
            run.begun,
            run.waited(),
            run.worked(),
            call.payload()};
}

} // namespace station
