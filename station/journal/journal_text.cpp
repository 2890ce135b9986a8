/* SPDX-License-Identifier: MIT
 *
 * Of a line's values: trusts nothing, members that are missing or of another type are empty.
 */
#include "journal_text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "common/file.h"
#include "common/text.h"
#include "journal_lines.h"

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

const json &member(const json &object, const char *name)
{
    static const json none;
    const auto value = object.is_object() ? object.find(name) : object.end();
    return object.is_object() && value != object.end() ? *value : none;
}

static std::string text_of(const json &value)
{
    return value.is_string() ? common::printable(value.get_ref<const std::string &>()) : "";
}

std::string text_at(const json &object, const char *name)
{
    return text_of(member(object, name));
}

common::value value_at(const json &object, const char *name)
{
    const json &value = member(object, name);
    return value.is_string() ? common::value(text_of(value)) : common::value::of(value);
}

moment moment_at(const json &object, const char *name)
{
    const std::string text = text_at(object, name);
    return {text, parse_timestamp(text)};
}

int64_t count_at(const json &object, const char *name, int64_t otherwise)
{
    const json &value = member(object, name);
    return value.is_number_integer() && value > 0 && value < 1000000 ? value.get<int64_t>() : otherwise;
}

int port_number_at(const json &object, const char *name)
{
    const std::string location = text_at(object, name);
    constexpr size_t MOST_DIGITS = 4;
    const size_t begin = location.find_last_not_of("0123456789") + 1;
    const size_t digits = location.size() - begin;
    return digits == 0 || digits > MOST_DIGITS ? 0 : std::stoi(location.substr(begin));
}

std::vector<std::string> names_at(const json &object, const char *name)
{
    std::vector<std::string> names;
    std::istringstream items(text_at(object, name));
    for (std::string item; std::getline(items, item, ',');)
        names.push_back(item);
    return names;
}

std::string raw_text_at(const json &object, const char *name)
{
    const auto value = object.find(name);
    return value != object.end() && value->is_string() ? value->get<std::string>() : "";
}

/* The endings of the names, longest first, and the type with which each counts. */
struct ending {
    diagnosis_ending as;
    common::verdict verdict;
};
constexpr ending ENDINGS[] = {
    {{"-fail-retried", "UNKNOWN"}, verdict::retried},
    {{"-not-tested", "UNKNOWN"}, verdict::not_tested},
    {{"-unknown", "UNKNOWN"}, verdict::unjudged},
    {{"-pass", "PASS"}, verdict::pass},
    {{"-fail", "FAIL"}, verdict::fail},
    /* of other programs */
    {{"", "PASS"}, verdict::pass},
    {{"", "FAIL"}, verdict::fail},
    {{"", ""}, verdict::unjudged},
};

diagnosis_name read_diagnosis(std::string_view name, std::string_view type)
{
    for (const auto &[suffix, verdict] : ENDINGS)
        if (name.ends_with(suffix.text) && (suffix.type == type || suffix.type.empty()))
            return {std::string(name.substr(0, name.size() - suffix.text.size())), verdict};
    return {std::string(name), verdict::unjudged};
}

diagnosis_ending ending_of(verdict verdict)
{
    const auto *row = std::ranges::find(ENDINGS, verdict, &ending::verdict);
    return row != std::end(ENDINGS) ? row->as : ending_of(verdict::unjudged);
}

run_result read_result(std::string_view status, std::string_view result)
{
    if (status == "COMPLETE" && result == "PASS")
        return run_result::pass;
    if (status == "COMPLETE" && result == "FAIL")
        return run_result::fail;
    return status == "SKIP" && result == "NOT_APPLICABLE" ? run_result::unjudged : run_result::no_verdict;
}

} // namespace journal
