/* SPDX-License-Identifier: MIT
 *
 * Runs a board for several threads: guards it, lets its time pass, and hands the CPU's frames over.
 */
#include "runner.h"

namespace sim
{

runner::runner(sim::board &board, double pace, receiver deliver)
    : board_(board), pace_(pace), deliver_(deliver), board_start_(board.clock.now())
{
    if (pace_ > 0)
        follower_ = std::thread(&runner::follow_wall_clock, this);
}

runner::~runner()
{
    {
        const std::lock_guard guard(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    if (follower_.joinable())
        follower_.join();
}

runner::wall_clock::duration runner::wall_time(time_us duration) const
{
    using microseconds = std::chrono::duration<double, std::micro>;
    return std::chrono::duration_cast<wall_clock::duration>(microseconds(static_cast<double>(duration) / pace_));
}

/* Brings the board up to the wall clock. */
void runner::catch_up()
{
    if (pace_ <= 0)
        return;
    const std::chrono::duration<double, std::micro> passed = wall_clock::now() - wall_start_;
    board_.clock.run_until(board_start_ + static_cast<time_us>(passed.count() * pace_));
}

void runner::hand_over(std::unique_lock<std::mutex> &lock)
{
    const auto frames = board_.cpu.take_frames();
    lock.unlock();
    for (const auto &f : frames)
        deliver_(&f.info, f.bytes.data(), static_cast<uint32_t>(f.bytes.size()));
    lock.lock();
}

void runner::wait(time_us duration)
{
    if (pace_ > 0)
        std::this_thread::sleep_for(wall_time(duration));
    else
        pass(duration);
}

void runner::pass(time_us duration)
{
    std::unique_lock lock(mutex_);
    const auto end = board_.clock.now() + duration;
    while (board_.clock.step(end)) {
        if (board_.cpu.has_frames())
            hand_over(lock);
    }
}

void runner::follow_wall_clock()
{
    std::unique_lock lock(mutex_);
    while (!ending_) {
        catch_up();
        if (board_.cpu.has_frames())
            hand_over(lock);
        else if (const auto next = board_.clock.next())
            changed_.wait_until(lock, wall_start_ + wall_time(*next - board_start_));
        else
            changed_.wait(lock);
    }
}

} // namespace sim
