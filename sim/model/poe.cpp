/* SPDX-License-Identifier: MIT */
#include "poe.h"

namespace sim
{

static constexpr uint32_t POE_LIMIT_MW = 30000;
static constexpr uint32_t HPOE_LIMIT_MW = 100000;
static constexpr uint32_t LOWEST_SUPPLY_MV = 44000;
static constexpr uint32_t HIGHEST_SUPPLY_MV = 57000;
static constexpr uint32_t CLASS_MW[] = {15400, 4000, 7000, 15400, 30000, 45000, 60000, 75000, 90000};

static bool has_ability(const port_config &config, uint32_t bits)
{
    return ((config.ability.copper | config.ability.fiber) & bits) != 0;
}

static bool in_range(uint32_t supply_mv)
{
    return supply_mv >= LOWEST_SUPPLY_MV && supply_mv <= HIGHEST_SUPPLY_MV;
}

poe_port::poe_port(event_clock &clock, const poe_config &controller, const port_config &config)
    : clock_(clock), detect_us_(time_us{controller.detect_ms} * 1000),
      supply_mv_(config.faults.poe.supply_mv.value_or(controller.supply_mv)),
      highest_limit_mw_(has_ability(config, FACMSG_ABILITY_HPOE) ? HPOE_LIMIT_MW : POE_LIMIT_MW), load_(config.load),
      faults_(config.faults.poe)
{
    start();
}

void poe_port::stop()
{
    era_++;
    state_ = poe_state::OFF;
}

void poe_port::start()
{
    limit_mw_ = highest_limit_mw_;
    enable(true);
}

void poe_port::enable(bool on)
{
    if (on && state_ == poe_state::OFF && !faults_.stays_off)
        search();
    if (!on && !faults_.stays_on)
        stop();
}

void poe_port::set_limit(uint32_t limit_mw)
{
    limit_mw_ = limit_mw;
    check_limit();
    if (state_ == poe_state::OVERLOADED && load_->draw_mw <= limit_mw_)
        search();
}

void poe_port::search()
{
    state_ = poe_state::SEARCHING;
    clock_.after(detect_us_, [this, era = ++era_] {
        if (era != era_)
            return;
        state_ = state_after_search();
        check_limit();
    });
}

poe_state poe_port::state_after_search() const
{
    if (supply_mv_ < LOWEST_SUPPLY_MV)
        return poe_state::NO_SUPPLY;
    if (!load_ || faults_.no_detection)
        return poe_state::SEARCHING;
    return CLASS_MW[seen_class()] <= highest_limit_mw_ ? poe_state::POWERED : poe_state::REFUSED;
}

void poe_port::check_limit()
{
    if (power_mw() <= limit_mw_)
        return;
    overloads_++;
    if (!faults_.never_trips && overloads_ >= faults_.trips_from)
        state_ = poe_state::OVERLOADED;
}

uint32_t poe_port::state_word() const
{
    const uint32_t detail = state_ == poe_state::NO_SUPPLY ? supply_mv_ / 10 : 0;
    return detail << 16 | static_cast<uint32_t>(state_);
}

uint32_t poe_port::power_mw() const
{
    return state_ == poe_state::POWERED ? load_->draw_mw : 0;
}

uint32_t poe_port::seen_class() const
{
    return faults_.seen_class.value_or(load_->pd_class);
}

std::optional<uint32_t> poe_port::pd_class() const
{
    return state_ == poe_state::POWERED ? std::optional(seen_class()) : std::nullopt;
}

std::optional<vop_reading> poe_port::measure_vop() const
{
    if (state_ != poe_state::OFF)
        return std::nullopt;
    return vop_reading{in_range(supply_mv_) ? 0u : 1u, supply_mv_};
}

poe_controller::poe_controller(event_clock &clock, const board_config &board)
    : clock_(clock), config_(board.poe), firmware_(board.poe.firmware)
{
    for (const auto &[number, config] : board.ports) {
        if (has_ability(config, FACMSG_ABILITY_POE | FACMSG_ABILITY_HPOE))
            ports_.try_emplace(number, clock_, config_, config);
    }
}

poe_port *poe_controller::find(uint32_t number)
{
    const auto row = ports_.find(number);
    return row == ports_.end() ? nullptr : &row->second;
}

void poe_controller::upgrade()
{
    for (auto &[number, output] : ports_)
        output.stop();
    clock_.after(upgrade_us(), [this] {
        firmware_ = config_.new_firmware;
        for (auto &[number, output] : ports_)
            output.start();
    });
}

} // namespace sim
