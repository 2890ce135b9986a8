/* SPDX-License-Identifier: MIT
 *
 * Switching the speed or the medium of a list of ports. Neither waits for link.
 */
#ifndef PORT_TESTS_SWITCH_TEST_H
#define PORT_TESTS_SWITCH_TEST_H

#include "facmsg.h"

/* Sets every port's speed code; each result is OK or SET_STATUS. 0 when every port was set, else 1. */
uint32_t platform_port_speed_switch(uint32_t unit, uint32_t speed, uint32_t *port_results, const uint32_t *ports,
                                    uint32_t count);

/* Sets every port to its other medium, then waits 5 s; each result is OK or MEDIUM. *medium receives what was set on
 * the last port whose status could be read. 0 when every port was set, else 1. */
uint32_t platform_port_medium_switch(uint32_t unit, uint32_t *medium, uint32_t *port_results, const uint32_t *ports,
                                     uint32_t count);

#endif
