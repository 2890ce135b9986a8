/* SPDX-License-Identifier: MIT
 *
 * A host with three ports, and a system whose waits take no time and whose marker file is not there.
 */
#ifndef FUZZ_SMALL_HOST_H
#define FUZZ_SMALL_HOST_H

/* Fills the library's driver table and silences standard output. Once. */
void small_host_start();

/* Forgets what the last input did, so that every input meets the same host. */
void small_host_reset();

#endif
