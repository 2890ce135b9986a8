/* SPDX-License-Identifier: MIT
 *
 * What whoever runs a plan sees while it runs: a line for each step that has ended, with what failed in it, and on a
 * terminal below them one line that is rewritten.
 */
#ifndef PLAN_CONSOLE_H
#define PLAN_CONSOLE_H

#include <chrono>

#include "identity.h"
#include "station/requests/notice.h"

namespace plan
{

struct console_settings {
    bool progress; /* the rewritten line, on stderr when that is a terminal */
    bool aside;    /* all lines go to stderr, as stdout is for something else */
};

/* Of one run, in one thread. A line that cannot be shown is no error: the record has it. */
class console
{
  public:
    /* Shows the plan at once. */
    console(const test_plan &plan, const identity &of, steps_view steps, const console_settings &settings);

    /* A step begins; its number counts from 0. */
    void begin(size_t number, int64_t attempt);
    /* Its time has not begun yet: the service is still at work for somebody else. */
    void wait();
    /* done says how far it is, if that is known. */
    void show(const std::string &done);
    /* Says how the attempt ended, and which checks failed. To be called when the journal has its end. */
    void end(common::verdict verdict, const std::string &sentence, std::span<const common::check> checks = {});
    void skip(size_t number);
    /* A line on stderr. */
    void say(const std::string &line);

    /* Makes room for a question; returns what it begins with: "step 3 of 9, leds". */
    std::string begin_question();

  private:
    double seconds() const;
    std::string heading(size_t number) const;
    void print(const std::string &line, size_t indent = 0);
    void clear();

    steps_view steps_;
    bool lively_; /* a line on stderr is rewritten */
    bool aside_;
    size_t number_ = 0;
    int64_t attempt_ = 1;
    std::chrono::steady_clock::time_point start_ = {};
    station::notice others_; /* who is waited for */
};

} // namespace plan

#endif
