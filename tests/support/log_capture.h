/* SPDX-License-Identifier: MIT
 *
 * Catches the library's log lines.
 */
#ifndef TESTS_SUPPORT_LOG_CAPTURE_H
#define TESTS_SUPPORT_LOG_CAPTURE_H

#include <string>

class log_capture
{
  public:
    /* Sets the log level, and standard output aside, for as long as this lives. */
    explicit log_capture(int level);
    ~log_capture();
    log_capture(const log_capture &) = delete;

    /* Everything logged so far. A line that starts with the log's prefix reads "operation: text"; any other line is
     * left as it was printed. Line ends are kept. */
    std::string text() const;
    /* The lines of one operation, without its name. */
    std::string text_of(const std::string &operation) const;

  private:
    int real_stdout;
    int file;
};

#endif
