/* SPDX-License-Identifier: MIT
 *
 * The CPU loopback test of a list of ports: speed, link, 500 frames out of each, 500 back.
 */
#ifndef PORT_TESTS_PORT_TEST_H
#define PORT_TESTS_PORT_TEST_H

#include "facmsg.h"

/* Tests the ports and writes one enum facmsg_port_code each into port_results. Returns 0 when every port passed and no
 * step failed, 1 otherwise. */
uint32_t platform_port_test(uint32_t unit, uint32_t any_speed, uint32_t speed, uint32_t duplex, uint32_t medium,
                            uint32_t *port_results, const uint32_t *ports, uint32_t port_count);

#endif
