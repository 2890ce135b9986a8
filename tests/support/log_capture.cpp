/* SPDX-License-Identifier: MIT
 *
 * Standard output, redirected into memory.
 */
#include "log_capture.h"

#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <sys/mman.h>
#include <unistd.h>

#include "facmsg.h"

log_capture::log_capture(int level)
{
    fflush(stdout);
    real_stdout = dup(STDOUT_FILENO);
    file = memfd_create("log", 0);
    dup2(file, STDOUT_FILENO);
    std::atomic_ref(facmsg_dbg).store(level);
}

log_capture::~log_capture()
{
    std::atomic_ref(facmsg_dbg).store(0);
    const std::string captured = text();
    dup2(real_stdout, STDOUT_FILENO);
    close(real_stdout);
    close(file);
    if (testing::Test::HasFailure()) /* the failure's own message may be among the lines */
        printf("captured:\n%s", captured.c_str());
}

std::string log_capture::text() const
{
    fflush(stdout);
    std::string raw(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    raw.resize(static_cast<size_t>(std::max<ssize_t>(0, pread(file, raw.data(), raw.size(), 0))));
    static const std::regex prefix(R"((^|\n)\[FACTORY <([a-z0-9_]+)>:<[a-z0-9_]+\.cpp->[1-9][0-9]*>\] )");
    return std::regex_replace(raw, prefix, "$1$2: ");
}

std::string log_capture::text_of(const std::string &operation) const
{
    std::istringstream all(text());
    std::string lines;
    for (std::string line; std::getline(all, line);)
        if (line.starts_with(operation + ": "))
            lines += line.substr(operation.size() + 2) + "\n";
    return lines;
}
