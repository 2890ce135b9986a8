/* SPDX-License-Identifier: MIT
 *
 * A board at work for several threads: guards it, lets its time pass, and hands the CPU's frames over.
 */
#ifndef SIM_LIVE_BOARD_H
#define SIM_LIVE_BOARD_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "board.h"

/* clang's -Wthread-safety holds what is GUARDED_BY a mutex to being used under it. Other compilers see nothing. */
#ifdef __clang__
#define THREAD_SAFETY(...) __attribute__((__VA_ARGS__))
#else
#define THREAD_SAFETY(...)
#endif
#define GUARDED_BY(mutex) THREAD_SAFETY(guarded_by(mutex))
#define REQUIRES(mutex) THREAD_SAFETY(requires_capability(mutex)) /* to be called under it */

namespace sim
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

/* Any thread may call its functions. The board must outlive it, and be used through it alone as long as it lives. */
class live_board
{
  public:
    using receiver = void (*)(const pack_info *, const uint8_t *, uint32_t);

    /* pace is board seconds per second; 0 is as fast as possible: then time passes in wait() alone, and the waiting
     * thread hands the frames over. Otherwise a thread of its own follows the wall clock and does so. deliver is called
     * for every frame that the CPU receives, with the board free for other calls. */
    live_board(board &target, double pace, receiver deliver);
    ~live_board();
    live_board(const live_board &) = delete;
    live_board &operator=(const live_board &) = delete;

    /* Calls use(board) with the board to itself, at its present time. use must not wait. */
    template <class F> auto with_board(F use)
    {
        const mutex_guard guard(mutex_);
        catch_up();
        changed_.notify_one(); /* use may order something earlier than what the own thread waits for */
        return use(board_);
    }

    /* Returns when that much board time has passed. */
    void wait(time_us duration);

  private:
    using wall_clock = std::chrono::steady_clock;

    void pass(time_us duration);
    void follow_wall_clock();
    void catch_up() REQUIRES(mutex_);
    void hand_over() REQUIRES(mutex_);
    wall_clock::duration wall_time(time_us duration) const;

    sim::mutex mutex_; /* never held while a frame is handed over or a thread waits */
    board &board_ GUARDED_BY(mutex_);
    bool ending_ GUARDED_BY(mutex_) = false;
    const double pace_;
    const receiver deliver_;
    const time_us board_start_;
    const wall_clock::time_point wall_start_ = wall_clock::now();
    std::condition_variable_any changed_;
    std::thread follower_;
};

} // namespace sim

#endif
