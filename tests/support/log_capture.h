/* SPDX-License-Identifier: MIT
 *
 * Catches the library's log lines.
 */
#ifndef TESTS_SUPPORT_LOG_CAPTURE_H
#define TESTS_SUPPORT_LOG_CAPTURE_H

#include <cstdio>
#include <functional>
#include <mutex>
#include <string>

class log_capture
{
  public:
    using receiver = std::function<void(const std::string &text)>;

    /* Sets the log level, and standard output aside, for as long as this lives. A receiver gets whole lines as they are
     * printed, in place of text(). */
    explicit log_capture(int level, receiver on_lines = nullptr);
    ~log_capture();
    log_capture(const log_capture &) = delete;

    /* Everything logged so far. A line that starts with the log's prefix reads "operation: text"; any other line is
     * left as it was printed. Line ends are kept. */
    std::string text() const;

  private:
    static ssize_t write(void *self, const char *bytes, size_t size);

    mutable std::mutex mutex;
    std::string caught;
    const receiver on_lines;
    FILE *const real_stdout;
};

#endif
