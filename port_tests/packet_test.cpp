/* SPDX-License-Identifier: MIT
 *
 * The packet test requests: pick the ports and have them tested.
 */
#include <cstddef>

#include "packet/test_ports.h"
#include "port_test.h"

static_assert(sizeof(packet_test_record) == 1052);
static_assert(offsetof(packet_test_record, port_count) == 24);
static_assert(offsetof(packet_test_record, port_results) == 28);

constexpr uint32_t LAST_SPEED_CODE = 16; /* of those that have their bits in an ability word */

/* What sets the two requests apart. */
struct packet_kind {
    uint32_t type;
    uint32_t required; /* ability bits that a port needs besides those of the speed */
};
constexpr packet_kind ALL_PORTS = {FACMSG_PACKET_TEST, 0};
constexpr packet_kind TEST_BOX = {FACMSG_PBOX_PACKET_TEST, FACMSG_ABILITY_HPOE};

/* The bits a port's ability word needs for the requested speed and duplex. */
static uint32_t speed_bits(uint32_t speed, uint32_t duplex)
{
    const uint32_t shift = 2 * (speed - 1);
    switch (duplex) {
    case 1:
        return UINT32_C(1) << shift;
    case 2:
        return UINT32_C(2) << shift;
    default:
        return (UINT32_C(3) << shift) | FACMSG_ABILITY_DUPLEX_0;
    }
}

static bool port_matches(const packet_test_record &request, uint32_t required, const port_ability_row &row)
{
    if (request.any_speed)
        return ((row.copper | row.fiber) & FACMSG_ABILITY_ANY_SPEED) != 0;
    if (request.speed == 0 || request.speed > LAST_SPEED_CODE)
        return false;
    const uint32_t word = request.medium == FACMSG_MEDIUM_COPPER ? row.copper : row.fiber;
    const uint32_t bits = speed_bits(request.speed, request.duplex) | required;
    return (word & bits) == bits;
}

static bool supported(const packet_test_record &request, const char *op)
{
    const bool slots = slots_filled(&drv::get_ability, &drv::get_status, &drv::set_status, &drv::get_port_phyid,
                                    &drv::set_cpu_mac_addr, &drv::clear_cpu_mac_addr);
    if (slots && (request.medium == FACMSG_MEDIUM_COPPER || request.medium == FACMSG_MEDIUM_FIBER))
        return true;
    log_as(op, LOG_ERROR, "Port test no support(get_ability:0x%p, get_status:0x%p, set_status:0x%p, medium:%d).\n",
           slot_address(&drv::get_ability), slot_address(&drv::get_status), slot_address(&drv::set_status),
           static_cast<int>(request.medium));
    return false;
}

/* A duplex code that no ability bits belong to. It shows only when the first port is judged, so that one is asked. */
static bool duplex_invalid(const packet_test_record &request, const char *op)
{
    if (request.any_speed || request.duplex <= 2)
        return false;
    read_port_ability(request.unit, 1, QUIET_SCAN, op);
    log_as(op, LOG_ERROR, "Invalid duplex %d.\n", static_cast<int>(request.duplex));
    return true;
}

static uint32_t test_matching_ports(packet_test_record &record, const packet_kind &kind, const char *op)
{
    if (!supported(record, op) || duplex_invalid(record, op))
        return FACMSG_PACKET_NOT_POSSIBLE;
    const auto matches = [&](const port_ability_row &row) { return port_matches(record, kind.required, row); };
    const uint32_t count = list_ports(record.unit, QUIET_SCAN, matches, op);
    if (count == 0) {
        log_as(op, LOG_TRACE, "No support port speed for testing.\n");
        return FACMSG_PACKET_NOT_POSSIBLE;
    }
    record.port_count = count;
    const uint32_t result = platform_port_test(record.unit, record.any_speed, record.speed, record.duplex,
                                               record.medium, record.port_results, g_test_ports, count);
    add_port_numbers(record.port_results, count);
    return result;
}

static int answer(int fd, facmsg_request *request, const packet_kind &kind, const char *op)
{
    const auto record = payload_of<packet_test_record>(request);
    record->result = test_matching_ports(*record, kind, op);
    return send_reply(fd, kind.type, record);
}

int facmsg_packet_test_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, ALL_PORTS, __func__);
}

int facmsg_pbox_packet_test_fun(int fd, facmsg_request *request)
{
    return answer(fd, request, TEST_BOX, __func__);
}
