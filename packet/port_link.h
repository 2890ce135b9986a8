/* SPDX-License-Identifier: MIT
 *
 * Link states of a list of ports.
 */
#ifndef PACKET_PORT_LINK_H
#define PACKET_PORT_LINK_H

#include "facmsg.h"

/* Reads every port's status into rows[i] and sets states[i] to OK (link up), NO_LINK or NOT_STARTED (unreadable).
 * 0 when every link is up, else -1. */
int platform_get_port_link(uint32_t unit, port_status_row *rows, uint32_t *states, const uint32_t *ports, int count);

#endif
