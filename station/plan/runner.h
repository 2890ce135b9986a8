/* SPDX-License-Identifier: MIT
 *
 * Runs the steps of a plan one after the other, into the journal first and then onto the console.
 */
#ifndef PLAN_RUNNER_H
#define PLAN_RUNNER_H

#include "console.h"
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
    journal::run_status status;
    bool interrupted;
};

class runner
{
  public:
    runner(const test_plan &plan, std::span<const step *const> steps, const run_settings &settings,
           journal::writer &journal, console &shown);

    /* Throws journal::not_saved, after which nothing more is sent. */
    run_end run();

  private:
    void run_step(size_t number);
    common::verdict run_attempt(size_t number, int64_t attempt);
    common::verdict conclude(const std::string &id, const step &asked, int64_t attempt, const station::outcome &unit);
    void give_up(const std::string &id, const station::no_reply &why);
    void show_working(const std::string &id, const step &asked, const std::string &done);
    void show_waiting(const std::string &id);
    void skip(size_t number, int64_t attempt);
    bool interrupted(); /* then no further step is run */
    void announce(const std::string &next);

    const test_plan &plan_;
    std::span<const step *const> steps_;
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
