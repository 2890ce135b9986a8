/* SPDX-License-Identifier: MIT */
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "world.h"

namespace world
{

std::function<void(const std::string &)> &on_event =
    *new std::function<void(const std::string &)>([](const std::string &) {});
std::atomic<uint64_t> clock_us = 1000000;
std::atomic<int> calls_to_failure;
std::atomic<int> live_allocations;
std::atomic<uintptr_t> latest_allocation;
std::atomic<size_t> failed_allocation;

static std::atomic<const char *> failing = "";

void fail(const char *function, int nth)
{
    failing = function;
    calls_to_failure = nth;
}

} // namespace world

static bool fails(const char *function)
{
    if (world::calls_to_failure == 0 || strcmp(world::failing, function) != 0 || --world::calls_to_failure > 0)
        return false;
    errno = EMFILE;
    return true;
}

static int wait(uint64_t us)
{
    world::clock_us += us;
    world::on_event("wait " + (us % 1000000 == 0 ? std::to_string(us / 1000000) + "s" : std::to_string(us) + "us"));
    return 0;
}

/* ---- The log ---- */

static std::mutex log_mutex;
static log_capture *capture;

static std::string plain_line(std::string line)
{
    char operation[64], file[64];
    int number = 0, end = 0;
    if (sscanf(line.c_str(), "[FACTORY <%63[a-z0-9_]>:<%63[a-z0-9_].cpp->%d>]%n", operation, file, &number, &end) ==
            3 &&
        number > 0 && line[static_cast<size_t>(end)] == ' ')
        line = std::string("<") + operation + ">" + line.substr(static_cast<size_t>(end));
    const bool whole = line.ends_with('\n');
    std::string text;
    for (const char byte : line.substr(0, line.size() - whole)) {
        char shown[5] = {byte};
        if (byte < ' ' || byte > '~')
            snprintf(shown, sizeof(shown), "\\x%02x", static_cast<uint8_t>(byte));
        text += shown;
    }
    return whole ? text : text + "\\c";
}

[[gnu::format(printf, 1, 0)]] static int print(const char *format, va_list arguments)
{
    char *line = nullptr;
    const int size = vasprintf(&line, format, arguments);
    const std::lock_guard lock(log_mutex);
    if (capture != nullptr)
        capture->on_line(plain_line(line));
    free(line);
    return size;
}

log_capture::log_capture(int level, receiver to)
    : on_line(to ? std::move(to) : [this](const std::string &line) { caught += line + "\n"; })
{
    const std::lock_guard lock(log_mutex);
    capture = this;
    std::atomic_ref(facmsg_dbg).store(level);
}

log_capture::~log_capture()
{
    const std::lock_guard lock(log_mutex);
    capture = nullptr;
    std::atomic_ref(facmsg_dbg).store(0);
}

std::string log_capture::text() const
{
    const std::lock_guard lock(log_mutex);
    return caught;
}

/* ---- What the library calls in place of the system ---- */

extern "C" {

[[gnu::format(printf, 1, 2)]] int __wrap_printf(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int size = print(format, arguments);
    va_end(arguments);
    return size;
}

unsigned __wrap_sleep(unsigned seconds)
{
    return static_cast<unsigned>(wait(seconds * UINT64_C(1000000)));
}

int __wrap_usleep(useconds_t us)
{
    return wait(us);
}

int __wrap_gettimeofday(timeval *now, void *)
{
    *now = {static_cast<time_t>(world::clock_us / 1000000), static_cast<suseconds_t>(world::clock_us % 1000000)};
    return fails("gettimeofday") ? -1 : 0;
}

void *__wrap_calloc(size_t count, size_t size)
{
    if (fails("allocation")) {
        world::failed_allocation = count * size;
        return nullptr;
    }
    world::live_allocations++;
    void *const memory = calloc(count, size);
    world::latest_allocation = reinterpret_cast<uintptr_t>(memory);
    return memory;
}

void *__wrap_malloc(size_t size)
{
    void *const memory = __wrap_calloc(1, size);
    return memory == nullptr ? nullptr : memset(memory, 0xA5, size); /* nobody is to rely on zeros */
}

void __wrap_free(void *memory)
{
    world::live_allocations -= memory != nullptr;
    free(memory);
}

int __wrap_system(const char *command)
{
    world::on_event(std::string("system(") + command + ")");
    return 0;
}

int __wrap_unlink(const char *path)
{
    if (path[0] != '/')
        return unlink(path);
    world::on_event(std::string("unlink(") + path + ")");
    return 0;
}

#define FAILS_ON_ORDER(function, parameters, arguments)    \
    int __wrap_##function parameters                       \
    {                                                      \
        return fails(#function) ? -1 : function arguments; \
    }
FAILS_ON_ORDER(socket, (int domain, int type, int protocol), (domain, type, protocol))
FAILS_ON_ORDER(bind, (int fd, const sockaddr *address, socklen_t length), (fd, address, length))
FAILS_ON_ORDER(listen, (int fd, int backlog), (fd, backlog))
FAILS_ON_ORDER(accept4, (int fd, sockaddr *address, socklen_t *length, int flags), (fd, address, length, flags))
FAILS_ON_ORDER(pthread_create, (pthread_t * thread, const pthread_attr_t *attr, void *(*run)(void *), void *arg),
               (thread, attr, run, arg))
}
