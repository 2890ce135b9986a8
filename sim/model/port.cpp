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

} // namespace sim
