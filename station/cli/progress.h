/* SPDX-License-Identifier: MIT
 *
 * What is seen of a request while it is at work.
 */
#ifndef STATION_PROGRESS_H
#define STATION_PROGRESS_H

#include "station/requests/command.h"
#include "station/requests/notice.h"

namespace station
{

/* A line of stderr, rewritten in place, for as long as this lives. A terminal that cannot do so gets one plain line. */
class progress
{
  public:
    progress(const command &row, bool wanted);
    ~progress();
    progress(const progress &) = delete;
    progress &operator=(const progress &) = delete;

    /* done says how far a transfer is. */
    void working(const std::string &done);
    /* The service is still at work for somebody else. */
    void waiting();
    /* Who else is waited for. */
    notice &others();

  private:
    const command &row_;
    bool plain_;  /* one line, not said yet */
    bool lively_; /* a line that is rewritten */
    bool begun_ = false;
    notice notice_;
    std::chrono::steady_clock::time_point start_ = {};
};

} // namespace station

#endif
