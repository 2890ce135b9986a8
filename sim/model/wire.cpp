/* SPDX-License-Identifier: MIT */
#include "wire.h"

#include <algorithm>
#include <utility>

namespace sim
{

wire::wire(event_clock &clock, kind material, port &end_a, port &end_b, arrival arrive)
    : clock_(clock), material_(material), ends_{&end_a, &end_b}, arrive_(std::move(arrive))
{
}

bool wire::ends_fit() const
{
    const auto &[a, b] = ends_;
    const auto alive = [this](const port &end) { return attached(end) && end.on && !end.config().faults.dead_link; };
    return alive(*a) && alive(*b) && a->speed() == b->speed() && a->medium() == b->medium();
}

void wire::link_down()
{
    for (auto *end : ends_) {
        if (attached(*end))
            end->link_down();
    }
}

void wire::restart()
{
    era_++;
    link_down();
    if (!ends_fit())
        return;
    time_us delay_ms = 0;
    for (const auto *end : ends_)
        delay_ms = std::max<time_us>(delay_ms, end->config().link_up_ms + end->config().faults.late_ms);
    bring_up(delay_ms * 1000);
}

void wire::bring_up(time_us delay)
{
    clock_.after(delay, [this, era = era_] {
        if (era == era_)
            came_up();
    });
}

void wire::came_up()
{
    for (size_t i = 0; i < ends_.size(); i++)
        ends_[i]->link_up([this, to = ends_[1 - i]](frame &&incoming) { arrive_(*to, std::move(incoming)); });
    for (const auto *end : ends_) {
        if (const auto up_ms = end->config().faults.flap_up_ms)
            clock_.after(time_us{up_ms} * 1000, [this, era = era_] {
                if (era == era_)
                    drop();
            });
    }
}

void wire::drop()
{
    era_++;
    link_down();
    time_us down_ms = 0;
    for (const auto *end : ends_)
        down_ms = std::max<time_us>(down_ms, end->config().faults.flap_down_ms);
    bring_up(down_ms * 1000);
}

} // namespace sim
