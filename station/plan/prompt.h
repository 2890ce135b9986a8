/* SPDX-License-Identifier: MIT
 *
 * Questions to whoever sits at the terminal, and waiting: an interruption ends both.
 */
#ifndef PLAN_PROMPT_H
#define PLAN_PROMPT_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace plan
{

/* Whether somebody is there to answer: stdin and stderr are a terminal. */
bool somebody_there();

/* Shows a question on stderr and waits for a line, which loses the blanks at its ends. What was typed before the
 * question, by a scanner perhaps, is no answer to it. Nothing when the input has ended. Throws station::no_reply when a
 * signal was noted (station/requests/interruption.h). */
std::optional<std::string> ask(const std::string &question);

/* Waits, and calls tick a few times a second. Throws as above. */
void wait(std::chrono::seconds time, const std::function<void()> &tick);

std::string trimmed(const std::string &text);

} // namespace plan

#endif
