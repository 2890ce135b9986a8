/* SPDX-License-Identifier: MIT
 *
 * The steps of a plan that is only looked at.
 */
#ifndef PLAN_LISTING_H
#define PLAN_LISTING_H

#include <span>

#include "plan.h"

namespace plan
{

std::string list_steps(const test_plan &plan, std::span<const step *const> steps);

/* The same as one JSON object. */
std::string list_steps_json(const test_plan &plan, std::span<const step *const> steps);

} // namespace plan

#endif
