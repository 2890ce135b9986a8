/* SPDX-License-Identifier: MIT
 *
 * The serpentine chain: each port hands on what it received undamaged, so a wrong counter spoils the expectation of the
 * port after it. Who is at fault shows from the counts of both.
 */
#ifndef STATION_CHAIN_H
#define STATION_CHAIN_H

#include "outcome.h"

namespace station
{

/* What one port counted. A count that the service found as expected has no flag, and no value of its own. */
struct chain_link {
    bool wrong_transmitted, wrong_received;
    uint32_t transmitted, received, damaged;
};

class frame_chain
{
  public:
    explicit frame_chain(uint32_t sent) : expected_(sent), least_(sent), most_(sent) {}

    /* Adds the checks "transmitted" and "received" of the next port. */
    void judge(port_outcome &row, chain_link link);

  private:
    uint32_t expected_;    /* by the service, from the counts of the port before */
    int64_t least_, most_; /* what may really have come to this port, where those counts are in doubt */

    void judge_by_expectation(port_outcome &row, const chain_link &link);
    void judge_in_doubt(port_outcome &row, const chain_link &link);
    void trust(int64_t least, int64_t most);
};

} // namespace station

#endif
