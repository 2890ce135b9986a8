/* SPDX-License-Identifier: MIT
 *
 * A board at work for several threads: guards it, lets its time pass, and hands the CPU's frames over.
 */
#ifndef SIM_LIVE_BOARD_H
#define SIM_LIVE_BOARD_H

#include <chrono>
#include <condition_variable>
#include <thread>

#include "board.h"
#include "common/thread_safety.h"

namespace sim
{

/* Any thread may call its functions. The board must outlive it, and be used through it alone as long as it lives. */
class live_board
{
  public:
    using receiver = void (*)(const pack_info *, const uint8_t *, uint32_t);

    /* pace is board seconds per second; 0 is as fast as possible: then time passes in wait() alone, and the waiting
     * thread hands the frames over. Otherwise a thread of its own follows the wall clock and does so. deliver is called
     * for every frame that the CPU receives, with the board free for other calls. */
    live_board(board &driven, double pace, receiver deliver);
    ~live_board();
    live_board(const live_board &) = delete;
    live_board &operator=(const live_board &) = delete;

    /* Calls use(board) with the board to itself, at its present time. use must not wait. */
    template <class F> auto with_board(F use)
    {
        const common::mutex_guard guard(mutex_);
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

    common::mutex mutex_; /* never held while a frame is handed over or a thread waits */
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
