/* SPDX-License-Identifier: MIT
 *
 * Writes the reports so that each is there as a whole or not at all, whenever power fails.
 */
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

#include "reports.h"

namespace reports
{

[[noreturn]] static void fail(const std::filesystem::path &file)
{
    throw std::system_error(errno, std::generic_category(), "cannot write " + file.string());
}

/* A file that is open until this ends. */
struct open_file {
    const std::filesystem::path path;
    int fd;

    open_file(const std::filesystem::path &file, int flags)
        : path(file), fd(open(file.c_str(), flags | O_CLOEXEC, 0644))
    {
        if (fd < 0)
            fail(path);
    }
    ~open_file()
    {
        if (fd >= 0)
            ::close(fd);
    }
    open_file(const open_file &) = delete;
    open_file &operator=(const open_file &) = delete;

    void write(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t written = ::write(fd, text.data(), text.size());
            if (written < 0 && errno != EINTR)
                fail(path);
            text.remove_prefix(written < 0 ? 0 : static_cast<size_t>(written));
        }
    }
    void sync() const
    {
        if (fsync(fd) != 0)
            fail(path);
    }
    void close()
    {
        const int closed = fd;
        fd = -1;
        if (::close(closed) != 0)
            fail(path);
    }
};

static void write_whole(const std::filesystem::path &file, const std::string &text)
{
    const std::filesystem::path unfinished = file.string() + ".unfinished";
    try {
        open_file made(unfinished, O_WRONLY | O_CREAT | O_TRUNC);
        made.write(text);
        made.sync();
        made.close();
        if (rename(unfinished.c_str(), file.c_str()) != 0)
            fail(file);
    } catch (...) {
        unlink(unfinished.c_str());
        throw;
    }
}

void write_reports(const std::filesystem::path &run_dir, const journal::run_record &run)
{
    write_whole(run_dir / "junit.xml", junit_text(run));
    write_whole(run_dir / "results.csv", csv_text(run));
    write_whole(run_dir / "report.html", html_text(run));
    open_file(run_dir, O_RDONLY | O_DIRECTORY).sync();
}

} // namespace reports
