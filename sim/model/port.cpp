/* SPDX-License-Identifier: MIT */
#include "port.h"

#include <algorithm>
#include <utility>

#include "ability.h"

namespace sim
{

uint32_t prbs_run::read_and_clear(bool locked, uint32_t errors_per_s, time_us now)
{
    if (!counted_from_)
        return PRBS_NO_LOCK;
    const time_us duration = now - std::exchange(*counted_from_, now);
    if (!locked)
        return PRBS_NO_LOCK;
    return static_cast<uint32_t>(std::min<uint64_t>(duration * errors_per_s / 1000000, PRBS_NO_LOCK - 1));
}

port::port(const port_config &config, event_clock &clock, wire_rate rate, port_set &with_room)
    : out(clock, rate, config.number, with_room, counters.ex_pkts), config_(config), medium_(config.medium),
      modes_(config.modes), host_word_0_(config.host_word_0), host_word_5_(config.host_word_5)
{
}

void port::link_up(egress::sink far_end)
{
    link = true;
    out.open(speed(), std::move(far_end));
}

void port::link_down()
{
    link = false;
    out.close();
}

port_status_row port::status() const
{
    const auto &mode = modes_[medium_];
    return {host_word_0_, link ? 1u : 0u, mode.speed, medium_, mode.duplex, host_word_5_};
}

bool port::set_status(const port_status_row &setting)
{
    const bool combo = config_.ability.copper && config_.ability.fiber;
    const auto medium = combo ? setting.medium : medium_;
    if (medium > FACMSG_MEDIUM_FIBER)
        return false;
    const bool medium_only = medium != medium_ && setting.speed == speed() && setting.duplex == modes_[medium_].duplex;
    const auto mode = medium_only ? modes_[medium] : port_mode{setting.speed, setting.duplex};
    if (!ability_allows(ability_word(medium), mode.speed, mode.duplex))
        return false;
    medium_ = medium;
    modes_[medium] = mode;
    host_word_0_ = setting.host_word_0;
    host_word_5_ = setting.host_word_5;
    return true;
}

/* Whether the fault that strikes every n-th frame strikes this one. */
static bool strikes(uint32_t every, uint64_t count)
{
    return every && count % every == 0;
}

bool port::take_in(frame &incoming)
{
    arrivals_++;
    if (strikes(config_.faults.lose_every, arrivals_))
        return false;
    if (strikes(config_.faults.damage_every, arrivals_))
        incoming.damaged = true;
    if (!config_.faults.stuck_counter)
        counters.in_pkts++;
    return true;
}

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
