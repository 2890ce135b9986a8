/* SPDX-License-Identifier: MIT
 *
 * The process's sleep, usleep and gettimeofday, on the board's clock.
 */
#include "host_time.h"

#include <sys/time.h>
#include <unistd.h>

static sim::runner *g_clock;

void sim::use_board_time(runner &clock)
{
    g_clock = &clock;
}

static void wait_us(uint64_t duration_us)
{
    if (g_clock)
        g_clock->wait(duration_us);
}

extern "C" {

unsigned int sleep(unsigned int seconds)
{
    wait_us(uint64_t{seconds} * 1000000);
    return 0;
}

int usleep(useconds_t duration_us)
{
    wait_us(duration_us);
    return 0;
}

int gettimeofday(struct timeval *time, void *) noexcept
{
    uint64_t now_us = 0;
    if (g_clock)
        now_us = sim::POWER_UP_EPOCH_US + g_clock->with_board([](sim::board &b) { return b.clock.now(); });
    time->tv_sec = static_cast<time_t>(now_us / 1000000);
    time->tv_usec = static_cast<suseconds_t>(now_us % 1000000);
    return 0;
}
}
