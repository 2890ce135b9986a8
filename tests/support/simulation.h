/* SPDX-License-Identifier: MIT
 *
 * The operating system as the code under test sees it, and the trace of what it did. The linker leads its waits, clock,
 * allocations, and a few calls that a test must be able to fail, here (--wrap); whatever a test did not ask for goes on
 * to the real function.
 */
#ifndef TESTS_SUPPORT_SIMULATION_H
#define TESTS_SUPPORT_SIMULATION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/* What a test saw happen, in order: driver calls, waits ("wait 2s"), marker-file changes. One line each; a line that
 * repeats at once is written once, with " xN" after it. */
void trace_add(const std::string &line);
void trace_clear();
std::string trace_text();
/* The lines that start with prefix, repeats counted. */
int trace_count(const std::string &prefix);

namespace simulation
{

/* Waits return at once, are traced, and move this clock on; so does time that passes without a wait. */
void pass(uint64_t us);

/* Called with every wait and marker-file change as it is traced, on the thread that does it. */
extern std::function<void(const std::string &)> &on_event;

/* The calling thread's nth allocation from now on fails (the first is 1); 0 takes the order back. */
void fail_allocation(int nth);
/* How many bytes the allocation that failed asked for; 0 when none failed yet. */
size_t failed_allocation_size();
/* What was allocated, by any thread, and not freed. */
int live_allocations();

/* The next call of this function, on any thread, fails with EMFILE: pthread_create, socket, bind, listen, accept4,
 * gettimeofday. */
void fail_next(const std::string &function);
/* Whether such an order still waits for its call. */
bool failure_pending();

} // namespace simulation

#endif
