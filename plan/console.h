/* SPDX-License-Identifier: MIT
 *
 * What whoever runs a plan sees while it runs: on a terminal one line that is rewritten, else a line for each step that
 * has ended.
 */
#ifndef PLAN_CONSOLE_H
#define PLAN_CONSOLE_H

#include <chrono>
#include <span>

#include "record.h"
#include "station/notice.h"

namespace plan
{

/* "26 s", "4 min 12 s" */
std::string duration_text(int64_t seconds);

/* "about 4 min", with what is not known left out of account. */
std::string expectation_text(std::span<const step *const> steps);

class console
{
  public:
    /* Shows the plan at once. Progress goes to stderr when that is a terminal and it is wanted. */
    console(const test_plan &plan, const identity &of, std::span<const step *const> steps, bool progress_wanted);

    /* A step begins; its number counts from 0. */
    void begin(size_t number, int64_t attempt);
    /* Its time has not begun yet: the service is still at work for somebody else. */
    void wait();
    /* done says how far it is, if that is known. */
    void show(const std::string &done);
    /* Takes the progress line away and says how the attempt ended. To be called when the journal has its end. */
    void end(const char *word, const std::string &sentence);
    void skip(size_t number);
    /* A line on stderr. */
    void say(const std::string &line);

  private:
    double seconds() const;
    void print(const std::string &line);
    void clear();

    std::span<const step *const> steps_;
    bool lively_; /* a line on stderr is rewritten */
    bool plain_;  /* lines on stdout */
    size_t number_ = 0;
    int64_t attempt_ = 1;
    std::chrono::steady_clock::time_point start_ = {};
    station::notice others_; /* who is waited for */
};

} // namespace plan

#endif
