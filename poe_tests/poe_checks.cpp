/* SPDX-License-Identifier: MIT
 *
 * Power states and overload, port by port.
 */
#include "poe.h"

#include "facmsg_internal.h"

constexpr uint32_t OVERLOAD_LIMIT_MW = 3000;

static uint32_t low_half(uint32_t word)
{
    return word & 0xFFFFu;
}

/* The code of a state word, for a controller that has states 0 to last_state. */
static uint32_t code_of_state(uint32_t state_word, uint32_t last_state)
{
    constexpr uint32_t CODES[] = {FACMSG_POE_STATE_0, 0, FACMSG_POE_STATE_2, FACMSG_POE_STATE_3, FACMSG_POE_STATE_4};
    const uint32_t state = low_half(state_word);
    if (state <= last_state)
        return CODES[state];
    return (state_word & 0xFFFF0000u) | FACMSG_POE_STATE_OTHER;
}

static uint32_t check_state(uint32_t port, uint32_t last_state, const char *op)
{
    uint32_t state_word = 0;
    if (call(&drv::poe_get_power_state, port, &state_word) != 0) {
        log_as(op, LOG_ERROR, "Get port%d poe power states fail.\n", static_cast<int>(port));
        return FACMSG_POE_STATE_UNREADABLE;
    }
    log_as(op, LOG_TRACE, "port%d poe states:%d.\n", static_cast<int>(port), static_cast<int>(state_word));
    return code_of_state(state_word, last_state);
}

static int check_states(int first, int end, uint32_t *state_code, uint32_t last_state, const char *op)
{
    int result = 0;
    for (int k = first; k < end; k++) {
        const uint32_t code = check_state(g_test_ports[k], last_state, op);
        if (code == 0)
            continue;
        result = 1;
        if (state_code[k] == 0)
            state_code[k] = code;
    }
    return result;
}

/* The overload code of a port whose limit has been lowered. */
static uint32_t read_overload(uint32_t port, const char *op)
{
    uint8_t overload = 0;
    uint32_t info = 0;
    if (call(&drv::poe_get_overload, port, &overload, &info) != 0) {
        log_as(op, LOG_ERROR, "Get port %d poe overload fail.\n", static_cast<int>(port));
        return FACMSG_POE_OVERLOAD_UNREADABLE;
    }
    if (overload == 1)
        return 0;
    uint32_t power = 0;
    if (call(&drv::poe_get_power, port, &power) != 0)
        power = 0;
    log_as(op, LOG_ERROR, "Get port %d poe power:%d.\n", static_cast<int>(port), static_cast<int>(power));
    log_as(op, LOG_ERROR, "port %d is not poe overload.\n", static_cast<int>(port));
    return info << 16 | FACMSG_POE_NO_OVERLOAD;
}

static uint32_t check_overload(uint32_t port, uint32_t restore_mw, const char *op)
{
    if (call(&drv::poe_set_max_power, port, OVERLOAD_LIMIT_MW) != 0) {
        log_as(op, LOG_ERROR, "Set port %d poe max(3w)  power fail.\n", static_cast<int>(port));
        return FACMSG_POE_LIMIT_FAILED;
    }
    const uint32_t code = read_overload(port, op);
    if (call(&drv::poe_set_max_power, port, restore_mw) == 0)
        return code;
    log_as(op, LOG_ERROR, "Set port %d poe max(30w)  power fail.\n", static_cast<int>(port));
    return FACMSG_POE_LIMIT_FAILED;
}

int facmsg_get_port_poe_status(int count, uint32_t *state_code)
{
    return check_states(0, count, state_code, 2, __func__);
}

int facmsg_get_port_hpoe_status(int first, int end, uint32_t *state_code)
{
    return check_states(first, end, state_code, 4, __func__);
}

int port_poe_overload_test(uint32_t k, uint32_t port, poe_test_reply *reply)
{
    reply->overload_code[k] = check_overload(port, POE_RESTORE_LIMIT_MW, __func__);
    return reply->overload_code[k] != 0;
}

int port_hpoe_overload_test(uint32_t k, uint32_t port, poe_test_reply *reply, uint32_t restore_mw)
{
    reply->overload_code[k] = check_overload(port, restore_mw, __func__);
    return reply->overload_code[k] != 0;
}
