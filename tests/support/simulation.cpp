/* SPDX-License-Identifier: MIT
 *
 * The wrapped functions. The marker file is never touched for real: its changes go to the trace.
 */
#include "simulation.h"

#include <atomic>
#include <cerrno>
#include <mutex>
#include <pthread.h>
#include <set>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

static std::atomic<uint64_t> clock_us = 1000000;
static thread_local int allocations_until_failure;
static thread_local size_t failed_size;
static std::atomic<int> live;
static std::mutex mutex;
static auto &failures = *new std::set<std::string>; /* the server thread may outlive main */

static auto &lines = *new std::vector<std::pair<std::string, int>>;

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

namespace simulation
{

std::function<void(const std::string &)> &on_event = *new std::function<void(const std::string &)>();

void fail_allocation(int nth)
{
    allocations_until_failure = nth;
    failed_size = 0;
}

size_t failed_allocation_size()
{
    return failed_size;
}

int live_allocations()
{
    return live;
}

void fail_next(const std::string &function)
{
    const std::lock_guard lock(mutex);
    failures.insert(function);
}

bool failure_pending()
{
    const std::lock_guard lock(mutex);
    return allocations_until_failure > 0 || !failures.empty();
}

void pass(uint64_t us)
{
    clock_us += us;
}

} // namespace simulation

static void event(const std::string &text)
{
    trace_add(text);
    if (simulation::on_event)
        simulation::on_event(text);
}

static int wait(uint64_t us)
{
    clock_us += us;
    event(us % 1000000 == 0 ? "wait " + std::to_string(us / 1000000) + "s" : "wait " + std::to_string(us) + "us");
    if (!simulation::on_event)
        std::this_thread::yield(); /* to the service's thread */
    return 0;
}

static bool allocation_fails(size_t size)
{
    if (allocations_until_failure == 0 || --allocations_until_failure > 0)
        return false;
    failed_size = size;
    return true;
}

static bool ordered_to_fail(const char *function)
{
    const std::lock_guard lock(mutex);
    return failures.erase(function) != 0;
}

extern "C" {

void *__real_malloc(size_t size);
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
    if (ordered_to_fail("gettimeofday"))
        return -1;
    *now = {static_cast<time_t>(clock_us / 1000000), static_cast<suseconds_t>(clock_us % 1000000)};
    return 0;
}

void *__wrap_malloc(size_t size)
{
    return allocation_fails(size) ? nullptr : (live++, __real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size)
{
    return allocation_fails(count * size) ? nullptr : (live++, __real_calloc(count, size));
}

void __wrap_free(void *memory)
{
    live -= memory != nullptr;
    __real_free(memory);
}

int __wrap_system(const char *command)
{
    event(std::string("system(") + command + ")");
    return 0;
}

int __wrap_unlink(const char *path)
{
    if (path[0] != '/')
        return __real_unlink(path);
    event(std::string("unlink(") + path + ")");
    return 0;
}

#define FAILS_ON_ORDER(function, parameters, arguments)                                         \
    int __real_##function parameters;                                                           \
    int __wrap_##function parameters                                                            \
    {                                                                                           \
        return ordered_to_fail(#function) ? (errno = EMFILE, -1) : __real_##function arguments; \
    }
FAILS_ON_ORDER(socket, (int domain, int type, int protocol), (domain, type, protocol))
FAILS_ON_ORDER(bind, (int fd, const sockaddr *address, socklen_t length), (fd, address, length))
FAILS_ON_ORDER(listen, (int fd, int backlog), (fd, backlog))
FAILS_ON_ORDER(accept4, (int fd, sockaddr *address, socklen_t *length, int flags), (fd, address, length, flags))
FAILS_ON_ORDER(pthread_create, (pthread_t * thread, const pthread_attr_t *attr, void *(*run)(void *), void *arg),
               (thread, attr, run, arg))
}
