/* SPDX-License-Identifier: MIT
 *
 * The time on a journal's line.
 */
#ifndef JOURNAL_TIMESTAMP_H
#define JOURNAL_TIMESTAMP_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace journal
{

/* Milliseconds since 1970 of a text such as 2026-11-23T08:15:02.114Z (UTC, milliseconds or finer); nothing for any
 * other form and for days that do not exist. */
std::optional<int64_t> parse_timestamp(std::string_view text);

} // namespace journal

#endif
