/* SPDX-License-Identifier: MIT
 *
 * The steps that ask nothing of the service: instructions, questions, pauses.
 */
#ifndef PLAN_MANUAL_H
#define PLAN_MANUAL_H

#include <functional>

#include "plan.h"

namespace plan
{

/* Has the operator do or answer what the step wants, or waits with a tick a few times a second. heading makes room for
 * a question and says what stands in front of it. Throws station::no_reply when nobody answers or a signal was noted.
 */
station::outcome carry_out_by_hand(const step &asked, const std::function<std::string()> &heading,
                                   const std::function<void()> &tick);

} // namespace plan

#endif
