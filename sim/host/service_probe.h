/* SPDX-License-Identifier: MIT
 *
 * Looks whether a service answers in the working directory.
 */
#ifndef SIM_SERVICE_PROBE_H
#define SIM_SERVICE_PROBE_H

namespace sim
{

/* Whether somebody accepts connections at the service's socket. */
bool service_listens();

/* Whether the service answers a request of no known type within a few seconds. Changes nothing in it. */
bool service_answers();

} // namespace sim

#endif
