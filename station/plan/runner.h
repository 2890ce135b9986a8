/* SPDX-License-Identifier: MIT
 *
 * Runs the steps of a plan one after the other, into the journal first and then onto the console.
 */
#ifndef PLAN_RUNNER_H
#define PLAN_RUNNER_H

#include "console.h"
#include "station/journal/journal.h"
#include "station/requests/carry_out.h"

namespace plan
{

struct run_settings {
    std::string directory; /* of the service, for messages */
    bool stop_on_fail;
    std::chrono::seconds grace;        /* for a request that runs when a signal comes */
    std::chrono::seconds busy_timeout; /* for a service that is at work for somebody else */
};

struct run_end {
    journal::run_status status; /* the worst of the steps; skip for a part of the plan that passed, too */
    bool interrupted;           /* by a signal: then the status is skip */
};

/* What it is given has to outlive it. */
class runner
{
  public:
    runner(const test_plan &plan, steps_view steps, const run_settings &settings, journal::writer &journal,
           console &screen);

    /* Runs each step, and again while it fails and may be tried again, until one says that the run stops there, the
     * service or the operator no longer answers, or a signal was noted: the rest is recorded as not run. To be called
     * once, in the thread whose signals are watched (station/requests/interruption.h) and in the service's directory.
     * The run's own head and end are the caller's. Throws journal::not_saved, after which nothing more is sent. */
    run_end run();

  private:
    void run_step(size_t number);
    common::verdict run_attempt(size_t number, int64_t attempt);
    common::verdict conclude(const std::string &id, const step &task, int64_t attempt, const station::outcome &unit);
    void give_up(const std::string &id, const station::no_reply &why);
    void show_working(const std::string &id, const step &task, const std::string &done);
    void show_waiting(const std::string &id);
    void skip(size_t number, int64_t attempt);
    bool interrupted(); /* then no further step is run */
    void announce(const std::string &next);

    const test_plan &plan_;
    steps_view steps_;
    const run_settings &settings_;
    journal::writer &journal_;
    console &console_;
    std::string over_; /* why no further step is run; empty: they are */
    bool announced_ = false;
    bool waiting_ = false; /* for the service, which is at work for somebody else */
    bool again_ = false;   /* the last attempt failed and is to be followed by another */
    bool judged_ = false, failed_ = false, error_ = false;
};

} // namespace plan

#endif
