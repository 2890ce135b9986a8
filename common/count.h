/* SPDX-License-Identifier: MIT
 *
 * Numbers of things in words.
 */
#ifndef COMMON_COUNT_H
#define COMMON_COUNT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace common
{

/* "1 port", "2 ports"; the noun takes an s. */
std::string counted(uint64_t count, std::string_view noun);

} // namespace common

#endif
