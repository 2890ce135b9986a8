/* SPDX-License-Identifier: MIT
 *
 * Runs a board for several threads: guards it, lets its time pass, and hands the CPU's frames over.
 */
#ifndef SIM_RUNNER_H
#define SIM_RUNNER_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "board.h"

namespace sim
{

class runner
{
  public:
    using receiver = void (*)(const pack_info *, const uint8_t *, uint32_t);

    /* pace is board seconds per second; 0 is as fast as possible: then time passes in wait() alone, and the waiting
     * thread hands the frames over. Otherwise a thread of the runner's own follows the wall clock and does so. deliver
     * is called for every frame that the CPU receives, with the board free for other calls. */
    runner(sim::board &board, double pace, receiver deliver);
    ~runner();
    runner(const runner &) = delete;
    runner &operator=(const runner &) = delete;

    /* Calls use(board) with the board to itself, at its present time. use must not wait. */
    template <class F> auto with_board(F use)
    {
        const std::lock_guard guard(mutex_);
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
    void catch_up();
    void hand_over(std::unique_lock<std::mutex> &lock);
    wall_clock::duration wall_time(time_us duration) const;

    sim::board &board_;
    const double pace_;
    const receiver deliver_;
    const time_us board_start_;
    const wall_clock::time_point wall_start_ = wall_clock::now();
    std::mutex mutex_; /* guards the board and ending_; never held while a frame is handed over or a thread waits */
    std::condition_variable changed_;
    bool ending_ = false;
    std::thread follower_;
};

} // namespace sim

#endif
