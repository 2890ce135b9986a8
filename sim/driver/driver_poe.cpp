/* SPDX-License-Identifier: MIT
 *
 * Driver functions: PoE.
 */
#include "driver_slots.h"

namespace sim
{

/* Calls use(output); -1 when the port has no PoE. */
template <class F> static int with_output(board &b, uint32_t number, F use)
{
    auto *output = b.poe.find(number);
    return output != nullptr ? use(*output) : -1;
}

int slots::poe_set_port_enable(board &b, uint32_t number, uint32_t enable)
{
    return with_output(b, number, [=](poe_port &output) {
        output.enable(enable != 0);
        return 0;
    });
}

int slots::poe_get_power_state(board &b, uint32_t number, uint32_t *power_state)
{
    return with_output(b, number, [=](const poe_port &output) {
        *power_state = output.state_word();
        return 0;
    });
}

int slots::poe_get_overload(board &b, uint32_t number, uint8_t *overload, uint32_t *info)
{
    constexpr uint32_t INFO_UNIT_MW = 10;
    return with_output(b, number, [=](const poe_port &output) {
        *overload = output.state() == poe_state::OVERLOADED;
        *info = output.power_mw() / INFO_UNIT_MW;
        return 0;
    });
}

int slots::poe_set_max_power(board &b, uint32_t number, uint32_t limit_mw)
{
    return with_output(b, number, [=](poe_port &output) {
        output.set_limit(limit_mw);
        return 0;
    });
}

int slots::poe_get_power(board &b, uint32_t number, uint32_t *power)
{
    return with_output(b, number, [=](const poe_port &output) {
        *power = output.power_mw();
        return 0;
    });
}

int slots::poe_get_pd_class(board &b, uint32_t number, uint32_t *pd_class)
{
    return with_output(b, number, [=](const poe_port &output) {
        const auto device_class = output.pd_class();
        *pd_class = device_class.value_or(0);
        return device_class ? 0 : -1;
    });
}

int slots::poe_get_mcu_ver(board &b, uint32_t *new_ver, uint32_t *cur_ver)
{
    *new_ver = b.poe.new_firmware();
    *cur_ver = b.poe.firmware();
    return 0;
}

int slots::poe_get_vop_test_result(board &b, uint32_t number, uint32_t *status, uint32_t *value)
{
    return with_output(b, number, [=](const poe_port &output) {
        const auto reading = output.measure_vop();
        if (!reading)
            return -1;
        *status = reading->status;
        *value = reading->supply_mv;
        return 0;
    });
}

/* The one function that returns only when its work is done. */
int slots::poe_mcu_upg(board &b)
{
    b.poe.upgrade();
    g_call_us = b.poe.upgrade_us();
    return 0;
}

} // namespace sim
