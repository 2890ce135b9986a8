/* SPDX-License-Identifier: MIT */
#include "console.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>

#include "common/terminal.h"
#include "common/text.h"
#include "common/verdict.h"
#include "common/words.h"

namespace plan
{

console::console(const test_plan &plan, const identity &of, steps_view steps, const console_settings &settings)
    : steps_(steps), lively_(settings.progress && common::terminal_of(STDERR_FILENO).lively), aside_(settings.aside),
      others_("plan", settings.progress)
{
    print(fmt::format("{} {}: serial {}, {}", plan.name, plan.version, of.serial, expectation_text(steps)));
}

/* One line, which is broken only where a terminal would break it. */
void console::print(const std::string &line, size_t indent)
{
    const common::terminal screen = common::terminal_of(aside_ ? STDERR_FILENO : STDOUT_FILENO);
    std::string text = common::escaped(common::printable(line));
    if (screen.there && indent + common::length(text) > screen.width)
        text = common::folded(text, indent, indent + 4, screen.width);
    clear();
    std::FILE *stream = aside_ ? stderr : stdout;
    std::fputs((std::string(indent, ' ') + text + "\n").c_str(), stream);
    std::fflush(stream);
}

void console::clear()
{
    others_.clear();
    if (lively_)
        common::clear_line(STDERR_FILENO);
}

double console::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

std::string console::heading(size_t number) const
{
    return fmt::format("step {} of {}  {}", number + 1, steps_.size(), steps_[number]->name);
}

void console::begin(size_t number, int64_t attempt)
{
    number_ = number;
    attempt_ = attempt;
    start_ = std::chrono::steady_clock::now();
}

void console::wait()
{
    start_ = std::chrono::steady_clock::now();
    others_.show(station::SERVICE_BUSY);
}

/* A step's part of the bar: what is not known counts little, but is there. */
static int64_t weight_of(const step &task)
{
    return std::max<int64_t>(1, expected_s(task));
}

/* How much of a bar to fill, never all of it: a step is still running. */
static int filled_part(steps_view steps, size_t running, int64_t elapsed_s, int width)
{
    int64_t passed = std::min(elapsed_s, weight_of(*steps[running])), total = 0;
    for (size_t i = 0; i < steps.size(); i++) {
        total += weight_of(*steps[i]);
        passed += i < running ? weight_of(*steps[i]) : 0;
    }
    return std::min<int>(static_cast<int>(width * passed / total), width - 1);
}

void console::show(const std::string &done)
{
    others_.clear();
    if (!lively_)
        return;
    const bool narrow = common::terminal_of(STDERR_FILENO).width < 64;
    const int bar_width = narrow ? 8 : 20;
    const step &task = *steps_[number_];
    const auto elapsed_s = static_cast<int64_t>(seconds());
    const int filled = filled_part(steps_, number_, elapsed_s, bar_width);
    const std::string expected = expected_s(task) > 0 && !narrow ? fmt::format(" of about {} s", expected_s(task)) : "";
    common::rewrite_line(
        STDERR_FILENO,
        fmt::format("[{:#<{}}{:.<{}}] {}  {} s{}{}", "", filled, "", bar_width - filled,
                    narrow ? fmt::format("{}/{} {}", number_ + 1, steps_.size(), task.name) : heading(number_),
                    elapsed_s, expected, done.empty() ? "" : ", " + done));
}

/* What failed, as far as a screen has room for it. */
static std::vector<std::string> failure_lines(std::span<const common::check> checks)
{
    constexpr size_t MOST = 12;
    std::vector<std::string> lines;
    for (const common::check &one : checks)
        if (one.verdict == common::verdict::fail)
            lines.push_back(fmt::format("{}  {}: {}", one.where.name, one.name, one.sentence));
    if (lines.size() > MOST + 1) {
        const size_t more = lines.size() - MOST;
        lines.resize(MOST);
        lines.push_back(fmt::format("and {} more", more));
    }
    return lines;
}

void console::end(common::verdict verdict, const std::string &sentence, std::span<const common::check> checks)
{
    const int64_t most = steps_[number_]->attempts;
    const bool tells_attempt = attempt_ > 1 || verdict == common::verdict::retried;
    print(fmt::format("{}  {}  {:.1f} s{}{}", heading(number_), word_of(verdict), seconds(),
                      tells_attempt ? fmt::format("  attempt {} of {}", attempt_, most) : "",
                      sentence.empty() ? "" : "  " + sentence));
    for (const std::string &line : failure_lines(checks))
        print(line, 4);
}

void console::skip(size_t number)
{
    print(fmt::format("{}  {}", heading(number), word_of(common::verdict::not_run)));
}

void console::say(const std::string &line)
{
    clear();
    common::say(line);
}

std::string console::begin_question()
{
    clear();
    return fmt::format("step {} of {}, {}", number_ + 1, steps_.size(), steps_[number_]->name);
}

} // namespace plan
