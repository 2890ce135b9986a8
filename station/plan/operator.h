/* SPDX-License-Identifier: MIT
 *
 * Whoever sits at the terminal: questions, the steps that are done by hand, and waiting. An interruption ends all of
 * it.
 */
#ifndef PLAN_OPERATOR_H
#define PLAN_OPERATOR_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "plan.h"

namespace plan
{

/* Whether somebody is there to answer: stdin and stderr are a terminal. */
bool somebody_there();

std::string trimmed(const std::string &text);

/* Shows a question on stderr and waits for a line, which loses the blanks at its ends. What was typed before the
 * question, by a scanner perhaps, is no answer to it. Nothing when the input has ended. Throws station::no_reply when a
 * signal was noted (station/requests/interruption.h). */
std::optional<std::string> ask(const std::string &question);

/* Has the operator do or answer what a step says that asks nothing of the service, or waits with a tick a few times a
 * second. heading makes room for a question and says what stands in front of it. Throws station::no_reply when the
 * input ends or a signal was noted. */
station::outcome carry_out_by_hand(const step &task, const std::function<std::string()> &heading,
                                   const std::function<void()> &tick);

} // namespace plan

#endif
