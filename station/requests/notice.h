/* SPDX-License-Identifier: MIT
 *
 * What a subcommand says on stderr while it waits for others: each sentence once, and on a
 * terminal that can do so below it a line that is rewritten.
 */
#ifndef STATION_NOTICE_H
#define STATION_NOTICE_H

#include <chrono>
#include <string>

namespace station
{

/* Said, and logged, while a request lies at the service and is not begun. */
constexpr const char *SERVICE_BUSY = "waiting for the service: it is still at work for somebody else";

class notice
{
  public:
    /* speaker is the subcommand; without a line every sentence is said once, on a terminal too. */
    notice(std::string speaker, bool line_wanted);
    ~notice();
    notice(const notice &) = delete;
    notice &operator=(const notice &) = delete;

    /* To be called again and again for as long as the sentence is true. */
    void show(const std::string &sentence);
    /* It is true no longer. */
    void clear();
    /* A line that stays. */
    void say(const std::string &sentence) const;

  private:
    std::string speaker_, shown_ = {};
    bool lively_;
    std::chrono::steady_clock::time_point since_ = {};
};

} // namespace station

#endif
