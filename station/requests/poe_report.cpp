/* SPDX-License-Identifier: MIT
 *
 * What the tests of the PoE ports share.
 */
#include "poe_report.h"

#include "facmsg.h"

namespace station
{

static constexpr code_sentence results[] = {
    {FACMSG_POE_PASS, ""},
    {FACMSG_POE_FAIL, ""},
    {FACMSG_POE_NOT_POSSIBLE, "the host lacks a driver function, or the switch has no port of this kind; "
                              "log-level 1 shows which"},
};

std::string find_poe_doubt(uint32_t result, const uint8_t *ports, uint32_t port_count, int runs)
{
    std::string doubt = find_obstacle(results, result);
    if (doubt.empty())
        doubt = find_wrong_count(port_count);
    return doubt.empty() ? find_wrong_port(ports_of_bytes(ports, port_count), runs) : doubt;
}

} // namespace station
