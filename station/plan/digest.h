/* SPDX-License-Identifier: MIT
 *
 * The digest that a plan file is known by.
 */
#ifndef PLAN_DIGEST_H
#define PLAN_DIGEST_H

#include <string>
#include <string_view>

namespace plan
{

/* SHA-256 in small hexadecimal letters. */
std::string sha256_of(std::string_view bytes);

} // namespace plan

#endif
