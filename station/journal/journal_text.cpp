/* SPDX-License-Identifier: MIT
 *
 * A journal as it lies on the disk: text of one JSON object a line.
 */
#include "journal_text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>

#include "common/file.h"

namespace journal
{

static unreadable_file unreadable(const std::filesystem::path &file)
{
    return unreadable_file(file.string() + ": " + common::path_fault(errno, "file"));
}

std::string read_text(const std::filesystem::path &file)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> open(std::fopen(file.c_str(), "rb"), &std::fclose);
    if (open == nullptr)
        throw unreadable(file);
    std::string text;
    char part[1 << 16];
    for (size_t size = 0; (size = std::fread(part, 1, sizeof(part), open.get())) > 0;)
        text.append(part, size);
    if (std::ferror(open.get()) != 0)
        throw unreadable(file);
    return text;
}

std::vector<text_line> lines_of(std::string_view text)
{
    std::vector<text_line> lines;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        lines.push_back({lines.size() + 1, text.substr(0, end), end != std::string_view::npos});
        text.remove_prefix(std::min(text.size(), lines.back().text.size() + 1));
    }
    return lines;
}

static bool has_form(std::string_view text, std::string_view form)
{
    return std::ranges::equal(text, form, [](char letter, char expected) {
        return expected == '0' ? letter >= '0' && letter <= '9' : letter == expected;
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
