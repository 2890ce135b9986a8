/* SPDX-License-Identifier: MIT
 *
 * The trace. Driver calls come from the server thread, client waits from the test's own.
 */
#include "trace.h"

#include <mutex>
#include <utility>
#include <vector>

static std::mutex mutex;
static auto &lines = *new std::vector<std::pair<std::string, int>>; /* the server thread may outlive main */

void trace_add(const std::string &line)
{
    const std::lock_guard lock(mutex);
    if (!lines.empty() && lines.back().first == line)
        lines.back().second++;
    else
        lines.emplace_back(line, 1);
}

void trace_clear()
{
    const std::lock_guard lock(mutex);
    lines.clear();
}

std::string trace_text()
{
    const std::lock_guard lock(mutex);
    std::string text;
    for (const auto &[line, times] : lines)
        text += line + (times > 1 ? " x" + std::to_string(times) : "") + "\n";
    return text;
}

int trace_count(const std::string &prefix)
{
    const std::lock_guard lock(mutex);
    int count = 0;
    for (const auto &[line, times] : lines)
        count += line.starts_with(prefix) ? times : 0;
    return count;
}
