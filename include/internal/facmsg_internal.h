/* SPDX-License-Identifier: MIT
 *
 * What only the library itself sees: the log line, the way to the driver slots, and the tables that all tests share.
 */
#ifndef FACMSG_INTERNAL_H
#define FACMSG_INTERNAL_H

#include <atomic>
#include <cstdint>

#include "facmsg.h"

/* ---- Log line ---- */

enum log_level : int32_t { LOG_ERROR = 0, LOG_TRACE = 1 };

inline bool log_enabled(int32_t level)
{
    return std::atomic_ref(facmsg_dbg).load(std::memory_order_relaxed) > level;
}

/* printf itself, which a host may supply, also where the C library's headers would put a checked one in its place. */
extern "C" [[gnu::format(printf, 1, 2)]] int print_log(const char *format, ...) __asm__("printf");

/* One line of the log, in the name of the operation op. Costs one comparison when the level is off. */
#define log_as(op, level, text, ...)                                                                            \
    do {                                                                                                        \
        if (log_enabled(level))                                                                                 \
            print_log("[FACTORY <%s>:<%s->%d>] " text, op, __FILE_NAME__, __LINE__ __VA_OPT__(, ) __VA_ARGS__); \
    } while (0)
#define log_error(text, ...) log_as(__func__, LOG_ERROR, text __VA_OPT__(, ) __VA_ARGS__)
#define log_trace(text, ...) log_as(__func__, LOG_TRACE, text __VA_OPT__(, ) __VA_ARGS__)

/* ---- Driver slots ---- */

using drv = vexa_diag_drv;

/* The function in a slot, or null. A host thread may be registering meanwhile, hence the atomic load; who calls the
 * function is to see what was written before it was registered. */
template <class F> F slot(F drv::*member, int order = __ATOMIC_ACQUIRE)
{
    F function;
    __atomic_load(&(facmsg_vexa_diag_drv.*member), &function, order);
    return function;
}

/* Calls a slot; an empty one fails like a driver that refuses. */
template <class... P, class... A> int call(int (*drv::*member)(P...), A... arguments)
{
    const auto function = slot(member);
    return function != nullptr ? function(arguments...) : -1;
}

/* Whether the host provides all of these. */
template <class... F> bool slots_filled(F... members)
{
    return (... && (slot(members, __ATOMIC_RELAXED) != nullptr));
}

/* A slot as the log shows it with %p. */
template <class F> void *slot_address(F drv::*member)
{
    return reinterpret_cast<void *>(slot(member, __ATOMIC_RELAXED));
}

/* ---- Requests ---- */

/* The payload of a request, as the record that its type says. */
template <class Record> Record *payload_of(facmsg_request *request)
{
    static_assert(sizeof(Record) <= FACMSG_MAX_PAYLOAD);
    static_assert(alignof(Record) <= sizeof(uint32_t));
    return reinterpret_cast<Record *>(request + 1);
}

/* Sends a whole record as the reply. */
template <class Record> int send_reply(int fd, uint32_t type, const Record *record)
{
    return facmsg_send(fd, type, sizeof(Record), record);
}

/* ---- Shared by all port tests; touched only by the thread that runs a test ---- */

extern port_ability_row g_port_ability[FACMSG_MAX_PORTS]; /* row p-1: what port p can do */
extern uint32_t g_test_ports[FACMSG_MAX_PORTS];           /* the running test's ports, in the order of its reply */

#endif
