/* SPDX-License-Identifier: MIT
 *
 * A mutex and its guard with annotations: clang's -Wthread-safety then holds what is GUARDED_BY a mutex to being used
 * under it. Other compilers see none.
 */
#ifndef COMMON_THREAD_SAFETY_H
#define COMMON_THREAD_SAFETY_H

#include <mutex>

#ifdef __clang__
#define THREAD_SAFETY(...) __attribute__((__VA_ARGS__))
#else
#define THREAD_SAFETY(...)
#endif
#define GUARDED_BY(mutex) THREAD_SAFETY(guarded_by(mutex))
#define REQUIRES(mutex) THREAD_SAFETY(requires_capability(mutex)) /* to be called under it */

namespace common
{

class THREAD_SAFETY(capability("mutex")) mutex : std::mutex
{
  public:
    void lock() THREAD_SAFETY(acquire_capability())
    {
        std::mutex::lock();
    }
    void unlock() THREAD_SAFETY(release_capability())
    {
        std::mutex::unlock();
    }
};

/* Holds a mutex as long as it lives. */
class THREAD_SAFETY(scoped_lockable) mutex_guard
{
  public:
    explicit mutex_guard(mutex &held) THREAD_SAFETY(acquire_capability(held)) : held_(held)
    {
        held_.lock();
    }
    ~mutex_guard() THREAD_SAFETY(release_capability())
    {
        held_.unlock();
    }
    mutex_guard(const mutex_guard &) = delete;
    mutex_guard &operator=(const mutex_guard &) = delete;

  private:
    mutex &held_;
};

} // namespace common

#endif
