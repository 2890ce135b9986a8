/* SPDX-License-Identifier: MIT
 *
 * Lines for whoever runs a program, whatever stands in them and wherever stderr leads.
 */
#include "say.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include <fmt/format.h>

#include "printable.h"
#include "terminal.h"
#include "wrap.h"

namespace common
{

static std::string escaped_char(char c)
{
    const auto code = static_cast<unsigned char>(c);
    if (c == '\n')
        return "\\n";
    if (c == '\t')
        return "\\t";
    return code < ' ' || code == 0x7F ? fmt::format("\\x{:02x}", code) : std::string(1, c);
}

std::string escaped(std::string_view text)
{
    std::string shown;
    for (const char c : text)
        shown += escaped_char(c);
    return shown;
}

void say(std::string_view line)
{
    const terminal screen = terminal_of(STDERR_FILENO);
    const std::string shown = escaped(line);
    const bool fits = !screen.there || length(shown) <= screen.width;
    std::fputs(((fits ? shown : folded(shown, 0, 4, screen.width)) + "\n").c_str(), stderr);
}

void print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

bool colour_wanted()
{
    const char *no_colour = std::getenv("NO_COLOR");
    return terminal_of(STDOUT_FILENO).lively && (no_colour == nullptr || *no_colour == '\0');
}

} // namespace common
