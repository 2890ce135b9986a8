/* SPDX-License-Identifier: MIT
 *
 * Which speed code each kind of port gets, and setting it.
 */
#include "stress.h"

#include "facmsg_internal.h"

constexpr uint8_t NO_EX_COPPER = 255;

enum speed_code : uint8_t { COPPER_1 = 1, COPPER_2 = 2, SPEED_1G = 3, SPEED_10G = 4, SPEED_2500M = 12, SPEED_5G = 13 };

enum port_type : uint32_t { TYPE_COPPER = 1, TYPE_EX_COPPER_A = 9, TYPE_EX_COPPER_B = 10 };

static uint8_t copper_code(uint32_t index)
{
    switch (index) {
    case 0:
        return COPPER_1;
    case 1:
        return COPPER_2;
    default:
        return SPEED_1G;
    }
}

static uint8_t ex_copper_code(uint32_t index, const ex_speed_support &support)
{
    if (!support.is_support_ex_speed)
        return NO_EX_COPPER;
    switch (index) {
    case 0:
        return SPEED_1G;
    case 1:
        return support.is_support_ex_2500M ? SPEED_2500M : SPEED_1G;
    case 2:
        if (support.is_support_ex_5G)
            return SPEED_5G;
        return support.is_support_ex_2500M ? SPEED_2500M : SPEED_1G;
    default:
        return SPEED_5G;
    }
}

static uint8_t fiber_code(uint32_t index, const ex_speed_support &support)
{
    return index == 1 && support.is_support_fiber_10G ? SPEED_10G : SPEED_1G;
}

static speed_choice choose_speeds(speed_index index, const char *op)
{
    ex_speed_support support = {};
    call(&drv::get_ex_speed_support, &support);
    log_as(op, LOG_TRACE,
           "is_support_ex_speed: %d is_support_ex_2500M: %d is_support_ex_5G: %d is_support_fiber_10G: %d\n",
           support.is_support_ex_speed, support.is_support_ex_2500M, support.is_support_ex_5G,
           support.is_support_fiber_10G);
    call(&drv::port_speed_prepare);
    return {copper_code(index.copper), ex_copper_code(index.ex_copper, support), fiber_code(index.fiber, support)};
}

/* The port's speed code; that of the port before it when it is of no known kind. */
static uint32_t code_for_port(uint32_t port, uint32_t type, const speed_choice &choice, uint32_t previous,
                              const char *op)
{
    const port_ability_row &ability = g_port_ability[port - 1];
    const int number = static_cast<int>(port);
    if (ability.copper != 0 && (type == TYPE_EX_COPPER_A || type == TYPE_EX_COPPER_B)) {
        log_as(op, LOG_TRACE, "set ex_copper port %d speed %d.\n", number, choice.ex_copper);
        return choice.ex_copper;
    }
    if (ability.copper != 0 && type == TYPE_COPPER) {
        log_as(op, LOG_TRACE, "set copper port %d speed %d.\n", number, choice.copper);
        return choice.copper;
    }
    if (ability.fiber != 0) {
        log_as(op, LOG_TRACE, "set fiber port %d speed %d.\n", number, choice.fiber);
        return choice.fiber;
    }
    return previous;
}

static bool get_type(uint32_t unit, uint32_t port, uint32_t *type, const char *op)
{
    log_as(op, LOG_TRACE, "get port %d port_type.\n", static_cast<int>(port));
    if (call(&drv::get_port_type, unit, port, type) == 0)
        return true;
    log_as(op, LOG_ERROR, "get port %d port_type faild.\n", static_cast<int>(port));
    return false;
}

int vexa_port_speed(uint32_t unit, const uint32_t *ports, uint32_t count, speed_index index, speed_choice *choice)
{
    *choice = choose_speeds(index, __func__);
    port_status_row status = {};
    for (uint32_t i = 0; i < count; i++) {
        uint32_t type = 0;
        if (!get_type(unit, ports[i], &type, __func__))
            continue;
        status.speed = code_for_port(ports[i], type, *choice, status.speed, __func__);
        const int port = static_cast<int>(ports[i]);
        const int speed = static_cast<int>(status.speed);
        log_trace("set port %d speed %d.\n", port, speed);
        if (call(&drv::set_status, unit, ports[i], &status) != 0) {
            log_error("set port %d speed %d faild.\n", port, speed);
            return 1;
        }
    }
    return 0;
}
