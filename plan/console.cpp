/* SPDX-License-Identifier: MIT
 *
 * What whoever runs a plan sees while it runs.
 */
#include "console.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>

#include "text/say.h"

namespace plan
{

/* Return to the first column and erase the line. */
static constexpr const char *rewrite = "\r\033[K";

std::string duration_text(int64_t seconds)
{
    if (seconds < 120)
        return fmt::format("{} s", seconds);
    return seconds % 60 == 0 ? fmt::format("{} min", seconds / 60)
                             : fmt::format("{} min {} s", seconds / 60, seconds % 60);
}

static int64_t expected_s(std::span<const step *const> steps)
{
    int64_t total = 0;
    for (const step *asked : steps)
        total += asked->row->expected.typical_s;
    return total;
}

std::string expectation_text(std::span<const step *const> steps)
{
    const auto unknown =
        std::ranges::count_if(steps, [](const step *asked) { return asked->row->expected.typical_s == 0; });
    return fmt::format("about {}{}", duration_text(expected_s(steps)),
                       unknown > 0 ? fmt::format(" and {} of unknown length", unknown) : "");
}

console::console(const test_plan &plan, const identity &of, std::span<const step *const> steps, bool progress_wanted)
    : steps_(steps), lively_(progress_wanted && isatty(STDERR_FILENO)), plain_(!lively_ || !isatty(STDOUT_FILENO)),
      others_("plan", progress_wanted)
{
    print(fmt::format("{} {}: serial {}, {} steps, {} expected", plan.name, plan.version, of.serial, steps.size(),
                      expectation_text(steps)));
}

void console::print(const std::string &line)
{
    std::fputs((text::escaped(line) + "\n").c_str(), stdout);
    std::fflush(stdout);
}

void console::clear()
{
    others_.clear();
    if (lively_)
        std::fputs(rewrite, stderr);
}

double console::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
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
    others_.show("waiting for the service: it is still at work for somebody else");
}

void console::show(const std::string &done)
{
    others_.clear();
    if (!lively_)
        return;
    constexpr int bar_width = 20;
    constexpr size_t line_width = 79;
    const step &asked = *steps_[number_];
    const auto elapsed_s = static_cast<int64_t>(seconds());
    const int64_t typical_s = asked.row->expected.typical_s;
    const int64_t passed_s = expected_s(steps_.first(number_)) + std::min(elapsed_s, typical_s);
    const auto filled = static_cast<int>(bar_width * passed_s / std::max<int64_t>(1, expected_s(steps_)));
    const std::string expected = typical_s > 0 ? fmt::format(" of about {} s", typical_s) : "";
    const std::string line =
        fmt::format("[{:#<{}}{:.<{}}] step {} of {}  {}  {} s{}{}", "", filled, "", bar_width - filled, number_ + 1,
                    steps_.size(), asked.name, elapsed_s, expected, done.empty() ? "" : ", " + done);
    std::fputs((rewrite + line.substr(0, line_width)).c_str(), stderr);
    std::fflush(stderr);
}

void console::end(const char *word, const std::string &sentence)
{
    clear();
    const int64_t most = steps_[number_]->attempts;
    if (plain_)
        print(fmt::format("step {} of {}  {}  {}  {:.1f} s{}{}", number_ + 1, steps_.size(), steps_[number_]->name,
                          word, seconds(),
                          attempt_ > 1 || (most > 1 && word == std::string_view("FAIL"))
                              ? fmt::format("  attempt {} of {}", attempt_, most)
                              : "",
                          sentence.empty() ? "" : "  " + sentence));
}

void console::skip(size_t number)
{
    if (plain_)
        print(fmt::format("step {} of {}  {}  SKIP", number + 1, steps_.size(), steps_[number]->name));
}

void console::say(const std::string &line)
{
    clear();
    text::say(line);
}

} // namespace plan
