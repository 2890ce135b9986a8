/* SPDX-License-Identifier: MIT
 *
 * Standard output, led into a string.
 */
#include "log_capture.h"

#include <atomic>
#include <gtest/gtest.h>
#include <regex>
#include <utility>

#include "facmsg.h"

ssize_t log_capture::write(void *self, const char *bytes, size_t size)
{
    const auto capture = static_cast<log_capture *>(self);
    const std::lock_guard lock(capture->mutex);
    if (capture->on_lines)
        capture->on_lines(std::string(bytes, size));
    else
        capture->caught.append(bytes, size);
    return static_cast<ssize_t>(size);
}

log_capture::log_capture(int level, receiver to) : on_lines(std::move(to)), real_stdout(stdout)
{
    fflush(stdout);
    stdout = fopencookie(this, "w", {nullptr, write, nullptr, nullptr});
    setvbuf(stdout, nullptr, _IOLBF, 1 << 16);
    std::atomic_ref(facmsg_dbg).store(level);
}

log_capture::~log_capture()
{
    std::atomic_ref(facmsg_dbg).store(0);
    const std::string captured = text();
    fclose(std::exchange(stdout, real_stdout));
    if (testing::Test::HasFailure()) /* the failure's own message may be among the lines */
        printf("captured:\n%s", captured.c_str());
}

std::string log_capture::text() const
{
    fflush(stdout);
    static const std::regex prefix(R"((^|\n)\[FACTORY <([a-z0-9_]+)>:<[a-z0-9_]+\.cpp->[1-9][0-9]*>\] )");
    const std::lock_guard lock(mutex);
    return std::regex_replace(caught, prefix, "$1$2: ");
}
