/* SPDX-License-Identifier: MIT */
#include "host_time.h"

#include <sys/time.h>
#include <unistd.h>

static sim::live_board *g_clock;

void sim::use_board_time(live_board &driven)
{
    g_clock = &driven;
}

static void wait_us(uint64_t duration_us)
{
    if (g_clock != nullptr)
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
    if (g_clock != nullptr)
        now_us = sim::POWER_UP_EPOCH_US + g_clock->with_board([](sim::board &b) { return b.clock.now(); });
    time->tv_sec = static_cast<time_t>(now_us / 1000000);
    time->tv_usec = static_cast<suseconds_t>(now_us % 1000000);
    return 0;
}
}
