/* SPDX-License-Identifier: MIT
 *
 * Questions to whoever sits at the terminal, and waiting.
 */
#include "prompt.h"

#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "common/printable.h"
#include "common/terminal.h"
#include "common/wrap.h"
#include "station/requests/carry_out.h"
#include "station/requests/interruption.h"

namespace plan
{

/* How long a signal may go unseen. */
constexpr int glance_ms = 100;

bool somebody_there()
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
}

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

static void leave_if_interrupted(const char *sentence)
{
    if (station::noted_signal() != 0)
        throw station::no_reply(station::noted_code(), "interrupted", sentence);
}

/* Until a letter can be read, or the end. */
static void wait_for_input()
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (poll(&input, 1, glance_ms) <= 0) {
        if (station::noted_signal() != 0)
            std::fputs("\n", stderr); /* the question stands alone on its line */
        leave_if_interrupted("the question was not answered: the run was interrupted");
    }
}

static std::optional<std::string> read_line()
{
    std::string line;
    for (;;) {
        char letter = 0;
        wait_for_input();
        const ssize_t size = read(STDIN_FILENO, &letter, 1);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return std::nullopt;
        if (letter == '\n')
            return line;
        line += letter;
    }
}

std::optional<std::string> ask(const std::string &question)
{
    const std::string shown =
        common::wrapped(common::printable(question), 0, common::terminal_of(STDERR_FILENO).width - 1);
    tcflush(STDIN_FILENO, TCIFLUSH);
    std::fputs((shown + " ").c_str(), stderr);
    std::fflush(stderr);
    const station::open_line asked;
    const auto line = read_line();
    if (!line)
        std::fputs("\n", stderr);
    return line ? std::optional(trimmed(*line)) : std::nullopt;
}

void wait(std::chrono::seconds time, const std::function<void()> &tick)
{
    const auto end = std::chrono::steady_clock::now() + time;
    for (auto now = end - time; now < end; now = std::chrono::steady_clock::now()) {
        tick();
        leave_if_interrupted("the pause was cut short: the run was interrupted");
        const auto left_ms = std::chrono::ceil<std::chrono::milliseconds>(end - now).count();
        poll(nullptr, 0, static_cast<int>(std::min<int64_t>(glance_ms, left_ms)));
    }
}

} // namespace plan
