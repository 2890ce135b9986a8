/* SPDX-License-Identifier: MIT
 *
 * A host with three ports and every driver function, and a system whose waits take no time and whose marker file is
 * not there.
 */
#ifndef FUZZ_SMALL_HOST_H
#define FUZZ_SMALL_HOST_H

#include <cstdint>

/* Fills the library's driver table. Once. */
void small_host_start();

/* Forgets what the last input did. An odd plan turns all logging on, and the driver call numbered half the plan fails.
 */
void small_host_reset(uint8_t plan);

#endif
