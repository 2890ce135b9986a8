/* SPDX-License-Identifier: MIT
 *
 * The operating system as the code under test sees it. The linker leads its waits, clock, allocations, and a few calls
 * that a test must be able to fail, here (--wrap); whatever a test did not ask for goes on to the real function.
 */
#ifndef TESTS_SUPPORT_SIMULATION_H
#define TESTS_SUPPORT_SIMULATION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace simulation
{

/* Waits return at once, leave "wait_us(N)" in the trace, and move this clock on. */
uint64_t now_us();
void pass(uint64_t us); /* time that passes without a wait */

/* Called in every wait, on the waiting thread. Set it while nothing waits. */
extern std::function<void()> &on_wait;

/* The calling thread's nth allocation from now on fails (the first is 1); 0 takes the order back. */
void fail_allocation(int nth);
/* How many bytes the allocation that failed asked for; 0 when none failed yet. */
size_t failed_allocation_size();

/* The next call of this function, on any thread, fails with EMFILE: pthread_create, socket, bind, listen, accept4,
 * gettimeofday. */
void fail_next(const std::string &function);

} // namespace simulation

#endif
