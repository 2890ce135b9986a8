/* SPDX-License-Identifier: MIT
 *
 * The world around the library, for its tests and fuzz targets: a driver whose functions all lead to one place, the
 * log, and the operating system. The linker leads the library's printf, waits, clock, allocations, and calls that have
 * to fail on order, here (--wrap); what is not ordered to fail goes on to the real function. One world a process; hooks
 * run on the thread that makes the call, and are set while nothing runs.
 */
#ifndef TESTS_SUPPORT_WORLD_H
#define TESTS_SUPPORT_WORLD_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "facmsg.h"

struct driver_call {
    /* A word, bytes (count of size 1), or an output: `count` values of `size` bytes each. */
    struct argument_row {
        int64_t word;
        const void *bytes;
        void *output;
        size_t size, count;
    };
    const char *slot = nullptr;
    uint32_t port = 0; /* or phy id of a frame; 0 without */
    size_t argument_count = 0;
    argument_row arguments[8];

    /* "slot(1,2)": the words and bytes handed over, without outputs. */
    std::string text() const;
    /* Writes these values to the outputs in turn, and 0 where there are no more. */
    void write(std::span<const uint64_t> values) const;
};

namespace world
{

/* What a driver call does and returns; at first it writes zeros and succeeds. */
extern std::function<int(const driver_call &)> &on_call;
/* Told of every wait ("wait 2s"; it returns at once and moves the clock on) and every change of the marker
 * file, which is never touched. */
extern std::function<void(const std::string &)> &on_event;

/* A table of functions that lead to on_call. */
vexa_diag_drv driver_table();
/* Takes a function out of the library's table; false for a name that no slot has. */
bool empty_slot(const std::string &name);
/* The name of the slot that has this function in driver_table(), "pointer" for the latest allocation, else "". */
std::string name_of(uintptr_t address);

/* In microseconds; time may pass without a wait as well. */
extern std::atomic<uint64_t> clock_us;
/* The nth call of this function from now on fails, with EMFILE: allocation, gettimeofday, pthread_create, socket, bind,
 * listen, accept4. */
void fail(const char *function, int nth = 1);
extern std::atomic<int> calls_to_failure; /* how many are left */
/* What was allocated and not freed, the address of the latest, the bytes of one that failed. */
extern std::atomic<int> live_allocations;
extern std::atomic<uintptr_t> latest_allocation;
extern std::atomic<size_t> failed_allocation;

} // namespace world

/* Bytes in hex. */
std::string hex(const void *bytes, size_t size);

/* Sets the log level and gets every line of the log, for as long as it lives. */
class log_capture
{
  public:
    using receiver = std::function<void(const std::string &line)>;

    /* A receiver gets each line as it is printed, in place of text(). */
    explicit log_capture(int level, receiver on_line = nullptr);
    ~log_capture();
    log_capture(const log_capture &) = delete;

    /* All lines so far, each "<operation> text\n"; a line without the log's prefix is left as it was. Bytes that are no
     * ASCII text stand as "\x0d"; "\c" at the end: the line has none. */
    std::string text() const;

    receiver on_line; /* never on two threads at once */

  private:
    std::string caught;
};

#endif
