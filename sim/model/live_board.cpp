/* SPDX-License-Identifier: MIT */
#include "live_board.h"

namespace sim
{

live_board::live_board(board &driven, double pace, receiver deliver)
    : board_(driven), pace_(pace), deliver_(deliver), board_start_(driven.clock.now())
{
    if (pace_ > 0)
        follower_ = std::thread(&live_board::follow_wall_clock, this);
}

live_board::~live_board()
{
    {
        const common::mutex_guard guard(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    if (follower_.joinable())
        follower_.join();
}

live_board::wall_clock::duration live_board::wall_time(time_us duration) const
{
    using microseconds = std::chrono::duration<double, std::micro>;
    return std::chrono::duration_cast<wall_clock::duration>(microseconds(static_cast<double>(duration) / pace_));
}

/* Brings the board up to the wall clock. */
void live_board::catch_up()
{
    if (pace_ <= 0)
        return;
    const std::chrono::duration<double, std::micro> passed = wall_clock::now() - wall_start_;
    board_.clock.run_until(board_start_ + static_cast<time_us>(passed.count() * pace_));
}

/* Lets go of the board meanwhile. */
void live_board::hand_over()
{
    const auto frames = board_.cpu.take_frames();
    mutex_.unlock();
    for (const auto &frame : frames)
        deliver_(&frame.info, frame.bytes.data(), static_cast<uint32_t>(frame.bytes.size()));
    mutex_.lock();
}

void live_board::wait(time_us duration)
{
    if (pace_ > 0)
        std::this_thread::sleep_for(wall_time(duration));
    else
        pass(duration);
}

void live_board::pass(time_us duration)
{
    const common::mutex_guard guard(mutex_);
    const auto end = board_.clock.now() + duration;
    while (board_.clock.step(end)) {
        if (board_.cpu.has_frames())
            hand_over();
    }
}

void live_board::follow_wall_clock()
{
    const common::mutex_guard guard(mutex_);
    while (!ending_) {
        catch_up();
        if (board_.cpu.has_frames())
            hand_over();
        else if (const auto next = board_.clock.next())
            changed_.wait_until(mutex_, wall_start_ + wall_time(*next - board_start_));
        else
            changed_.wait(mutex_);
    }
}

} // namespace sim
