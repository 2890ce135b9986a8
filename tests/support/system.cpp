/* SPDX-License-Identifier: MIT */
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

#include "world.h"

namespace
{

/* How many calls are left until one fails. */
struct {
    const std::string_view function;
    std::atomic<int> calls;
} orders[] = {{"allocation", 0}, {"gettimeofday", 0}, {"pthread_create", 0}, {"socket", 0},
              {"bind", 0},       {"listen", 0},       {"accept4", 0}};

bool ordered_to_fail(std::string_view function)
{
    for (auto &order : orders)
        if (order.function == function && order.calls > 0 && --order.calls == 0)
            return errno = EMFILE, true;
    return false;
}

int wait(uint64_t us)
{
    world::clock_us += us;
    world::on_event("wait " + (us % 1000000 == 0 ? std::to_string(us / 1000000) + "s" : std::to_string(us) + "us"));
    return 0;
}

} // namespace

namespace world
{

std::function<void(const std::string &)> &on_event =
    *new std::function<void(const std::string &)>([](const std::string &) {});
std::atomic<uint64_t> clock_us = 1000000;
std::atomic<int> live_allocations;
std::atomic<uintptr_t> latest_allocation;
std::atomic<size_t> failed_allocation;

void fail(std::string_view function, int nth)
{
    for (auto &order : orders)
        if (order.function == function)
            order.calls = nth;
}

bool failure_pending()
{
    return std::ranges::any_of(orders, [](const auto &order) { return order.calls > 0; });
}

} // namespace world

extern "C" {

void *__real_calloc(size_t count, size_t size);
void __real_free(void *memory);
int __real_unlink(const char *path);

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
    return ordered_to_fail("gettimeofday") ? -1 : 0;
}

void *__wrap_calloc(size_t count, size_t size)
{
    if (ordered_to_fail("allocation")) {
        world::failed_allocation = count * size;
        return nullptr;
    }
    world::live_allocations++;
    void *const memory = __real_calloc(count, size);
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
    __real_free(memory);
}

int __wrap_system(const char *command)
{
    world::on_event(std::string("system(") + command + ")");
    return 0;
}

int __wrap_unlink(const char *path)
{
    if (path[0] != '/')
        return __real_unlink(path);
    world::on_event(std::string("unlink(") + path + ")");
    return 0;
}

#define FAILS_ON_ORDER(function, parameters, arguments)                       \
    int __real_##function parameters;                                         \
    int __wrap_##function parameters                                          \
    {                                                                         \
        return ordered_to_fail(#function) ? -1 : __real_##function arguments; \
    }
FAILS_ON_ORDER(socket, (int domain, int type, int protocol), (domain, type, protocol))
FAILS_ON_ORDER(bind, (int fd, const sockaddr *address, socklen_t length), (fd, address, length))
FAILS_ON_ORDER(listen, (int fd, int backlog), (fd, backlog))
FAILS_ON_ORDER(accept4, (int fd, sockaddr *address, socklen_t *length, int flags), (fd, address, length, flags))
FAILS_ON_ORDER(pthread_create, (pthread_t * thread, const pthread_attr_t *attr, void *(*run)(void *), void *arg),
               (thread, attr, run, arg))
}

/* ---- The log ---- */

namespace
{

std::string plain_line(std::string line)
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

} // namespace

ssize_t log_capture::write(void *self, const char *bytes, size_t size)
{
    const auto capture = static_cast<log_capture *>(self);
    const std::string text(bytes, size);
    for (size_t from = 0, end; from < size; from = end) {
        end = std::min(text.find("[FACTORY <", from + 1), size);
        capture->on_line(plain_line(text.substr(from, end - from)));
    }
    return static_cast<ssize_t>(size);
}

log_capture::log_capture(int level, receiver to) : on_line(std::move(to)), real_stdout(stdout)
{
    if (!on_line)
        on_line = [this](const std::string &line) {
            const std::lock_guard lock(mutex);
            caught += line + "\n";
        };
    fflush(stdout);
    stdout = fopencookie(this, "w", {nullptr, write, nullptr, nullptr});
    setvbuf(stdout, nullptr, _IOLBF, 1 << 16);
    std::atomic_ref(facmsg_dbg).store(level);
}

log_capture::~log_capture()
{
    std::atomic_ref(facmsg_dbg).store(0);
    fclose(std::exchange(stdout, real_stdout));
}

std::string log_capture::text() const
{
    fflush(stdout);
    const std::lock_guard lock(mutex);
    return caught;
}
