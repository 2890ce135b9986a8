/* SPDX-License-Identifier: MIT */
#include "runner.h"

#include <algorithm>
#include <fmt/format.h>

#include "operator.h"
#include "record.h"
#include "station/requests/carry_out.h"
#include "station/requests/interruption.h"

namespace plan
{

using common::verdict;

runner::runner(const test_plan &plan, steps_view steps, const run_settings &settings, journal::writer &journal,
               console &screen)
    : plan_(plan), steps_(steps), settings_(settings), journal_(journal), console_(screen)
{
}

bool runner::interrupted()
{
    if (station::noted_signal() == 0)
        return false;
    announce("no further step is run;");
    over_ = "the run was interrupted";
    return true;
}

/* The first time only: what happens next. */
void runner::announce(const std::string &next)
{
    if (announced_)
        return;
    announced_ = true;
    console_.say(
        fmt::format("interrupted: {} the record is written. Interrupt again to leave at once, without its end.", next));
}

void runner::skip(size_t number, int64_t attempt)
{
    const std::string id = begin_attempt(journal_, *steps_[number], attempt);
    journal_.log(id, over_);
    journal_.step_end(id, journal::step_status::skip);
    console_.skip(number);
}

/* No reply that can be judged: a fault of the station or the service, never of the unit. */
void runner::give_up(const std::string &id, const station::no_reply &why)
{
    const std::string symptom = why.symptom;
    const std::string sentence = why.what();
    if (symptom == "interrupted") {
        interrupted();
        journal_.log(id, sentence);
        journal_.step_end(id, journal::step_status::skip);
        return console_.end(verdict::not_run, sentence);
    }
    error_ = true;
    journal_.error(id, symptom, sentence);
    journal_.step_end(id, journal::step_status::error);
    console_.end(verdict::no_verdict, sentence);
    if (symptom == "input-ended")
        over_ = "the input ended, so nobody answers any longer";
    else if (symptom != "no-verdict")
        over_ = "the service did not answer an earlier step";
}

verdict runner::conclude(const std::string &id, const step &task, int64_t attempt, const station::outcome &unit)
{
    const judgement result = judge(plan_, task, unit);
    const bool failed = result.verdict == verdict::fail;
    again_ = failed && attempt < task.attempts && !interrupted();
    end_attempt(journal_, id, plan_, task, unit, result, again_);
    const bool error = result.verdict == verdict::no_verdict;
    const bool unexplained =
        failed && std::ranges::find(result.checks, verdict::fail, &common::check::verdict) == result.checks.end();
    error_ = error_ || error;
    judged_ = judged_ || (failed && !again_) || result.verdict == verdict::pass;
    failed_ = failed_ || (failed && !again_);
    console_.end(again_ ? verdict::retried : result.verdict, error || unexplained ? result.summary : "", result.checks);
    return result.verdict;
}

void runner::show_working(const std::string &id, const step &task, const std::string &done)
{
    if (waiting_)
        journal_.log(id, journal::SERVICE_BEGAN);
    waiting_ = false;
    if (station::noted_signal() != 0)
        announce(fmt::format("waiting for {} to end, at most {} s; then", task.name, settings_.grace.count()));
    console_.show(done);
}

void runner::show_waiting(const std::string &id)
{
    if (!waiting_)
        journal_.log(id, station::SERVICE_BUSY);
    waiting_ = true;
    console_.wait();
}

verdict runner::run_attempt(size_t number, int64_t attempt)
{
    const step &task = *steps_[number];
    const std::string id = begin_attempt(journal_, task, attempt);
    console_.begin(number, attempt);
    again_ = waiting_ = false;
    const station::patience allowed{settings_.busy_timeout, std::chrono::seconds(task.timeout_s), settings_.grace};
    const station::audience onlookers{[&](const std::string &done) { show_working(id, task, done); },
                                      [&] { show_waiting(id); }};
    std::optional<station::outcome> unit;
    try {
        unit = task.row != nullptr ? station::carry_out(*task.row, task.sent, settings_.directory, allowed, onlookers)
                                   : carry_out_by_hand(
                                         task, [&] { return console_.begin_question(); }, [&] { console_.show(""); });
    } catch (const station::no_reply &error) {
        give_up(id, error);
    } catch (const std::exception &error) {
        give_up(id, {station::exit_code::no_verdict, "no-verdict", error.what()});
    }
    return unit ? conclude(id, task, attempt, *unit) : verdict::no_verdict;
}

/* Only a failure is tried again: of everything else a second attempt would say no more. */
void runner::run_step(size_t number)
{
    const step &task = *steps_[number];
    int64_t attempt = 1;
    verdict last = run_attempt(number, attempt);
    while (again_ && !interrupted())
        last = run_attempt(number, ++attempt);
    if (again_)
        return skip(number, attempt + 1);
    const bool wrong = last == verdict::fail || last == verdict::no_verdict;
    if (wrong && over_.empty() && (task.stop_on_fail || settings_.stop_on_fail))
        over_ = fmt::format("step {} {}, and the run stops there", task.name,
                            last == verdict::fail ? "failed" : "had no verdict");
}

run_end runner::run()
{
    for (size_t number = 0; number < steps_.size(); number++) {
        if (interrupted() || !over_.empty())
            skip(number, 1);
        else
            run_step(number);
    }
    const bool cut_short = interrupted(), partial = steps_.size() < plan_.steps.size();
    return {cut_short             ? journal::run_status::skip
            : error_              ? journal::run_status::error
            : failed_             ? journal::run_status::fail
            : !judged_ || partial ? journal::run_status::skip /* no reader may take a part for the whole */
                                  : journal::run_status::pass,
            cut_short};
}

} // namespace plan
