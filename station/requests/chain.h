/* SPDX-License-Identifier: MIT
 *
 * The serpentine chain: each port hands on what it received undamaged, so a wrong counter spoils the expectation of the
 * port after it. Who is at fault shows from the counts of the ports before and after.
 */
#ifndef STATION_CHAIN_H
#define STATION_CHAIN_H

#include "outcome.h"

namespace station
{

/* What one port counted. A count that the service found as expected has no flag, and no value of its own. */
struct chain_link {
    bool wrong_transmitted, wrong_received;
    int64_t transmitted, received, damaged;

    bool counted_alike(int64_t count) const
    {
        return transmitted == count && received == count;
    }
};

class frame_chain
{
  public:
    frame_chain(uint32_t sent, std::vector<chain_link> links);

    /* Adds the checks "transmitted" and "received" of the next port. */
    void judge(port_outcome &row);

  private:
    std::vector<chain_link> links_; /* each with the values of both counts */
    size_t next_ = 0;
    int64_t expected_;     /* by the service, from the counts of the port before */
    int64_t trusted_;      /* what the last port handed on whose counts are beyond doubt */
    int64_t least_, most_; /* what may really have come to this port */

    void judge_by_expectation(port_outcome &row, const chain_link &link);
    void judge_in_doubt(port_outcome &row, const chain_link &link);
    bool is_trusted_again(size_t port) const;
    bool rises_after(size_t port) const;
    void trust(int64_t count);
    void doubt(const chain_link &link);
};

} // namespace station

#endif
