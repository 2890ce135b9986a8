/* SPDX-License-Identifier: MIT */
#include "terminal.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

#include "text.h"

namespace common
{

static constexpr const char *ERASE = "\r\033[K"; /* returns to the first column and erases the line */

static bool takes_escapes()
{
    const char *kind = std::getenv("TERM");
    return kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

/* The first characters, whole ones. */
static std::string_view cut(std::string_view text, size_t most)
{
    size_t size = text.size();
    while (length(text.substr(0, size)) > most)
        size--;
    return text.substr(0, size);
}

/* A terminal that has gone takes nothing more, which is no reason to stop. */
static void write_all(int fd, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written <= 0)
            return;
        text.remove_prefix(static_cast<size_t>(written));
    }
}

terminal terminal_of(int fd)
{
    constexpr size_t LEAST_WIDTH = 40; /* a narrower one breaks the line, which is better than no line */
    constexpr size_t MOST_WIDTH = 200;
    const bool there = isatty(fd) == 1;
    winsize size{};
    const bool known = there && ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return {there, there && takes_escapes(),
            known ? std::clamp<size_t>(size.ws_col, LEAST_WIDTH, MOST_WIDTH) : SCREEN_COLUMNS};
}

bool colour_wanted()
{
    const char *no_colour = std::getenv("NO_COLOR");
    return terminal_of(STDOUT_FILENO).lively && (no_colour == nullptr || *no_colour == '\0');
}

size_t stdout_columns()
{
    constexpr size_t MOST = 100; /* longer lines are hard to read */
    return std::min(MOST, terminal_of(STDOUT_FILENO).width);
}

void print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void say(std::string_view line)
{
    const terminal screen = terminal_of(STDERR_FILENO);
    const std::string shown = escaped(line);
    const bool fits = !screen.there || length(shown) <= screen.width;
    std::fputs(((fits ? shown : folded(shown, 0, 4, screen.width)) + "\n").c_str(), stderr);
}

void rewrite_line(int fd, std::string_view text)
{
    const std::string line = escaped(text);
    write_all(fd, ERASE + std::string(cut(line, terminal_of(fd).width - 1))); /* in the last column some go on */
}

void clear_line(int fd)
{
    write_all(fd, ERASE);
}

} // namespace common
