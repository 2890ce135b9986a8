/* SPDX-License-Identifier: MIT
 *
 * A record lock of the process, because the system tells who holds one; what he does with it stands in the file. The
 * file stays when the lock goes: who removed it might remove that of the next one.
 */
#include "service_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "carry_out.h"
#include "common/text.h"
#include "facmsg_protocol.h"
#include "interruption.h"

namespace station
{

static constexpr const char *LOCK_PATH = "tmp/.facmsg-station.lock";

/* Whoever may connect to the service may hold the lock: root does not keep it from the host's user. */
static int create_lock_file()
{
    const int fd = open(LOCK_PATH, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    struct stat host;
    if (fd >= 0 && geteuid() == 0 && stat(FACMSG_SOCKET_PATH, &host) == 0 && fchown(fd, host.st_uid, host.st_gid) != 0)
        return fd; /* root alone can go on with it, as before */
    return fd;
}

/* Without a service there is nothing to keep, and the request will say why there is none. */
static bool is_service_there()
{
    struct stat status;
    return stat(FACMSG_SOCKET_PATH, &status) == 0 && S_ISSOCK(status.st_mode) && access(FACMSG_SOCKET_PATH, W_OK) == 0;
}

static int open_lock_file()
{
    for (;;) {
        const int old_file = open(LOCK_PATH, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (old_file >= 0 || errno != ENOENT)
            return old_file;
        const int new_file = create_lock_file();
        if (new_file >= 0 || errno != EEXIST)
            return new_file;
    }
}

static struct flock whole_file(short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

/* The first line of the file; it may have been left by a holder before. */
static std::string written_in(int fd)
{
    char text[512];
    const ssize_t size = pread(fd, text, sizeof(text), 0);
    const std::string all = common::printable({text, static_cast<size_t>(std::max<ssize_t>(0, size))});
    return all.substr(0, all.find('\n'));
}

/* Who keeps the lock from a claim; empty when nobody does. */
static std::string holder_of(int fd, short type)
{
    struct flock lock = whole_file(type);
    if (fcntl(fd, F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK)
        return "";
    const std::string said = written_in(fd);
    const std::string process = fmt::format("process {}", lock.l_pid);
    if (lock.l_pid <= 0) /* in a container of its own */
        return said.empty() ? "a process that cannot be seen from here" : said;
    return said.starts_with(process + ":") ? said : process;
}

static no_reply held(const std::string &directory, const std::string &holder)
{
    return {exit_code::no_verdict, "busy",
            fmt::format("another station is at the service in directory '{}': {}; --wait waits for its end", directory,
                        holder)};
}

/* Waits for who holds the lock, or throws. */
static void be_patient(const claim &terms, const std::string &holder, notice &message)
{
    if (!terms.wait)
        throw held(terms.directory, holder);
    message.show("waiting for " + holder);
    if (noted_signal() != 0)
        throw no_reply(noted_code(), "interrupted",
                       fmt::format("interrupted while waiting for {}; nothing was sent", holder));
    wait_for_wake_up(std::chrono::milliseconds(200));
}

static void write_purpose(int fd, const std::string &purpose)
{
    const std::string line = fmt::format("process {}: {}, since {:%Y-%m-%d %H:%M:%S} UTC\n", getpid(),
                                         common::escaped(purpose), fmt::gmtime(std::time(nullptr)));
    if (ftruncate(fd, 0) == 0 && pwrite(fd, line.data(), line.size(), 0) < 0)
        return; /* the process is known all the same */
}

service_lock::service_lock(const claim &terms, notice &message) : service_lock()
{
    take(terms, message);
}

void service_lock::take(const claim &terms, notice &message)
{
    if (!is_service_there())
        return;
    const short type = terms.shared ? F_RDLCK : F_WRLCK;
    fd_ = open_lock_file();
    struct flock lock = whole_file(type);
    while (fd_ < 0 || fcntl(fd_, F_SETLK, &lock) != 0) {
        if (fd_ < 0 || (errno != EACCES && errno != EAGAIN))
            return message.say(
                fmt::format("{} cannot be locked ({}), so nothing keeps other stations from this service", LOCK_PATH,
                            std::generic_category().message(errno)));
        const std::string holder = holder_of(fd_, type);
        if (!holder.empty())
            be_patient(terms, holder, message);
    }
    message.clear();
    write_purpose(fd_, terms.purpose);
}

service_lock::~service_lock()
{
    if (fd_ >= 0)
        close(fd_);
}

void refuse_if_held(const std::string &directory)
{
    const int fd = open((directory + "/" + LOCK_PATH).c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    const std::string holder = holder_of(fd, F_WRLCK);
    close(fd);
    if (!holder.empty())
        throw held(directory, holder);
}

} // namespace station
