/* SPDX-License-Identifier: MIT
 *
 * The factory-test service of the working directory, as the host that serves it looks at it.
 */
#ifndef SIM_SERVICE_H
#define SIM_SERVICE_H

namespace sim
{

/* Whether somebody accepts connections at the service's socket. */
bool service_listens();

/* Whether the service answers a request of no known type within a few seconds. Changes nothing in it. */
bool service_answers();

/* Runs the flow pressure test, which no request leads to: calls the library's function and prints its reply as one line
 * of JSON; port arrays as the list positions, counted from 1, that are set. Throws std::system_error when there is no
 * way to get the reply. */
void run_flow_pressure();

} // namespace sim

#endif
