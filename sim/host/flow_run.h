/* SPDX-License-Identifier: MIT
 *
 * Runs the flow pressure test, which no request leads to, in the host itself.
 */
#ifndef SIM_FLOW_RUN_H
#define SIM_FLOW_RUN_H

namespace sim
{

/* Calls the library's function and prints its reply as one line of JSON; port arrays as the list positions, counted
 * from 1, that are set. Throws std::system_error when there is no way to get the reply. */
void run_flow_pressure();

} // namespace sim

#endif
