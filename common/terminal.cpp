/* SPDX-License-Identifier: MIT
 *
 * The terminal that an output leads to, and the one line on it that is rewritten in place.
 */
#include "terminal.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

#include "printable.h"
#include "say.h"

namespace common
{

static bool takes_escapes()
{
    const char *kind = std::getenv("TERM");
    return kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

terminal terminal_of(int fd)
{
    constexpr size_t unknown_width = 80;
    constexpr size_t least_width = 40; /* a narrower one breaks the line, which is better than no line */
    constexpr size_t most_width = 200;
    const bool there = isatty(fd) == 1;
    winsize size{};
    const bool known = there && ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return {there, there && takes_escapes(),
            known ? std::clamp<size_t>(size.ws_col, least_width, most_width) : unknown_width};
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

/* Return to the first column and erase the line. */
static constexpr const char *erase = "\r\033[K";

void rewrite_line(int fd, std::string_view text)
{
    const std::string line = escaped(text);
    write_all(fd, erase + std::string(cut(line, terminal_of(fd).width - 1))); /* in the last column some go on */
}

void clear_line(int fd)
{
    write_all(fd, erase);
}

} // namespace common
