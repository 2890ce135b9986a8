/* SPDX-License-Identifier: MIT
 *
 * The time on a journal's line.
 */
#include "timestamp.h"

#include <algorithm>
#include <chrono>

namespace journal
{

static bool has_form(std::string_view text, std::string_view form)
{
    return std::ranges::equal(text, form, [](char found, char wanted) {
        return wanted == '0' ? found >= '0' && found <= '9' : found == wanted;
    });
}

static int number_of(std::string_view digits)
{
    int number = 0;
    for (const char digit : digits)
        number = number * 10 + (digit - '0');
    return number;
}

std::optional<int64_t> parse_timestamp(std::string_view text)
{
    constexpr std::string_view form = "0000-00-00T00:00:00.000";
    if (text.size() <= form.size() || !has_form(text.substr(0, form.size()), form) || text.back() != 'Z')
        return std::nullopt;
    const auto finer = text.substr(form.size(), text.size() - form.size() - 1);
    const auto part = [&](size_t begin, size_t size) { return number_of(text.substr(begin, size)); };
    const std::chrono::year_month_day day{std::chrono::year(part(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(part(8, 2)))};
    const int hour = part(11, 2), minute = part(14, 2), second = part(17, 2);
    const bool digits_only = std::ranges::all_of(finer, [](char c) { return c >= '0' && c <= '9'; });
    if (!digits_only || !day.ok() || hour > 23 || minute > 59 || second > 60) /* 60: a leap second */
        return std::nullopt;
    const auto seconds = std::chrono::sys_days(day).time_since_epoch() + std::chrono::hours(hour) +
                         std::chrono::minutes(minute) + std::chrono::seconds(second);
    return std::chrono::milliseconds(seconds).count() + part(20, 3);
}

} // namespace journal
