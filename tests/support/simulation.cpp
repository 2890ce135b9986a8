/* SPDX-License-Identifier: MIT
 *
 * The wrapped functions. The marker file is never touched for real: its changes go to the trace.
 */
#include "simulation.h"

#include <atomic>
#include <cerrno>
#include <map>
#include <mutex>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

#include "trace.h"

static std::atomic<uint64_t> clock_us = 1000000;
static thread_local int allocations_until_failure;
static thread_local size_t failed_size;
static std::mutex mutex;
static auto &failures = *new std::map<std::string, int>; /* the server thread may outlive main */

namespace simulation
{

std::function<void()> &on_wait = *new std::function<void()>;

uint64_t now_us()
{
    return clock_us;
}

void fail_allocation(int nth)
{
    allocations_until_failure = nth;
    failed_size = 0;
}

size_t failed_allocation_size()
{
    return failed_size;
}

void fail_next(const std::string &function, int error)
{
    const std::lock_guard lock(mutex);
    failures[function] = error;
}

} // namespace simulation

static int wait(uint64_t us)
{
    clock_us += us;
    trace_add("wait_us(" + std::to_string(us) + ")");
    if (simulation::on_wait)
        simulation::on_wait();
    std::this_thread::yield();
    return 0;
}

static bool allocation_fails(size_t size)
{
    if (allocations_until_failure == 0 || --allocations_until_failure > 0)
        return false;
    failed_size = size;
    return true;
}

static int ordered_error(const char *function)
{
    const std::lock_guard lock(mutex);
    const auto order = failures.extract(function);
    return order.empty() ? 0 : order.mapped();
}

template <class F> static int unless_ordered(const char *function, F real)
{
    const int error = ordered_error(function);
    if (error == 0)
        return real();
    errno = error;
    return -1;
}

extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
int __real_unlink(const char *path);
int __real_socket(int domain, int type, int protocol);
int __real_bind(int fd, const sockaddr *address, socklen_t length);
int __real_listen(int fd, int backlog);
int __real_accept4(int fd, sockaddr *address, socklen_t *length, int flags);
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attr, void *(*run)(void *), void *arg);

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
    *now = {static_cast<time_t>(clock_us / 1000000), static_cast<suseconds_t>(clock_us % 1000000)};
    return 0;
}

void *__wrap_malloc(size_t size)
{
    return allocation_fails(size) ? nullptr : __real_malloc(size);
}

void *__wrap_calloc(size_t count, size_t size)
{
    return allocation_fails(count * size) ? nullptr : __real_calloc(count, size);
}

int __wrap_system(const char *command)
{
    trace_add(std::string("system(") + command + ")");
    return 0;
}

int __wrap_unlink(const char *path)
{
    if (path[0] != '/')
        return __real_unlink(path);
    trace_add(std::string("unlink(") + path + ")");
    return 0;
}

int __wrap_socket(int domain, int type, int protocol)
{
    return unless_ordered("socket", [=] { return __real_socket(domain, type, protocol); });
}

int __wrap_bind(int fd, const sockaddr *address, socklen_t length)
{
    return unless_ordered("bind", [=] { return __real_bind(fd, address, length); });
}

int __wrap_listen(int fd, int backlog)
{
    return unless_ordered("listen", [=] { return __real_listen(fd, backlog); });
}

int __wrap_accept4(int fd, sockaddr *address, socklen_t *length, int flags)
{
    return unless_ordered("accept", [=] { return __real_accept4(fd, address, length, flags); });
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attr, void *(*run)(void *), void *arg)
{
    const int error = ordered_error("pthread_create");
    return error != 0 ? error : __real_pthread_create(thread, attr, run, arg);
}
}
