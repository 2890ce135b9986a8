/* SPDX-License-Identifier: MIT
 *
 * Calls of the library, and the least that could do their job, for an emulator to count their instructions:
 * calls NAME TIMES. What one call costs is the difference of two runs, divided by that of their TIMES. Without
 * arguments it lists the names.
 */
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "facmsg_internal.h"
#include "packet/transmit.h"
#include "receive_floor.h"
#include "stress_tests/stress.h"

/* The library's clock: each reading is a minute after the last, so that a sender that waits for time sends one burst.
 */
extern "C" int gettimeofday(timeval *now, void *)
{
    static time_t second;
    *now = {second += 60, 0};
    return 0;
}

/* ---- Frames received ---- */

/* Frames of a type from 256 ports in turn, beginning with `first`. */
[[gnu::noinline]] static void receive(hook receiver, uint32_t type, uint32_t first, uint32_t times)
{
    uint8_t frame[FRAME_LENGTH] = {};
    frame[12] = static_cast<uint8_t>(type >> 8);
    frame[13] = static_cast<uint8_t>(type);
    pack_info info = {};
    asm volatile("" : "+r"(receiver)); /* called through the pointer, as the host does */
    for (uint32_t i = 0; i < times; i++) {
        info.phy_id = first + i % PORTS;
        receiver(&info, frame, FRAME_LENGTH);
    }
}

/* Phy ids 0 to 255 get all rows. */
static void receive_known(uint32_t type, uint32_t first, uint32_t times)
{
    receive(vexa_recv_packet, 0xF0F0, 0, PORTS);
    receive(vexa_recv_packet, type, first, times);
}

/* ---- Frames sent ---- */

static constexpr uint32_t PORT = 1;

[[gnu::noinline]] static int take_frame(const pack_info *, const uint8_t *, uint32_t)
{
    asm volatile("" ::: "memory");
    return 0;
}

static int give_phy_id(uint32_t port, void *record)
{
    *static_cast<uint32_t *>(record) = port;
    return 0;
}

static void send_bare(uint32_t frames)
{
    const pack_info info = {0, 0, PORT};
    const uint8_t frame[FRAME_LENGTH] = {};
    for (uint32_t i = 0; i < frames; i++)
        if (facmsg_vexa_diag_drv.send_packet(&info, frame, FRAME_LENGTH) != 0)
            abort();
}

static void send_burst()
{
    const port_packet_req request = {PORT, 1, 1, 0, TEST_FRAMES_PER_BURST};
    if (vexa_send_packet_use_cpsp(&request) != 0)
        abort();
}

static void send_serpentine()
{
    uint32_t sent = 0;
    if (vexa_send_ess_serpentine_flow_use_cpsp(&PORT, 1, &sent) != 0)
        abort();
}

/* ---- Requests ---- */

static int ends[2];

/* Takes what was sent out of the socket. */
static void read_back(size_t size)
{
    char bytes[64];
    if (read(ends[1], bytes, size) != static_cast<ssize_t>(size))
        abort();
}

static void reply()
{
    const uint32_t payload[2] = {};
    if (facmsg_send(ends[0], 9, sizeof(payload), payload) != 0)
        abort();
    read_back(16);
}

static void bare_reply()
{
    const uint32_t message[4] = {};
    if (write(ends[0], message, sizeof(message)) != sizeof(message))
        abort();
    read_back(16);
}

/* A request of a type that there is not: looked up, and answered by its header alone. */
static void dispatch()
{
    alignas(facmsg_request) char request[sizeof(facmsg_request)] = {};
    memset(request, 99, 4);
    facmsg_lib_test_main(ends[0], reinterpret_cast<facmsg_request *>(request));
    read_back(8);
}

[[gnu::noinline]] static void log_off()
{
    log_trace("%d", 1);
}

[[gnu::noinline]] static void log_not_there()
{
    asm volatile("" ::: "memory");
}

template <void (*call)()> static void repeat(uint32_t times)
{
    for (uint32_t i = 0; i < times; i++)
        call();
}

static const struct {
    const char *name;
    void (*run)(uint32_t times);
} CALLS[] = {
    {"two-byte compare", [](uint32_t times) { receive(compare_two_bytes, 0x0800, 0, times); }},
    {"ignored frame", [](uint32_t times) { receive_known(0x0800, 0, times); }},
    {"direct-indexed add", [](uint32_t times) { receive(count_directly, 0xF0F0, 0, times); }},
    {"counted frame", [](uint32_t times) { receive_known(0xF0F0, 0, times); }},
    {"counted frame of type 89 06", [](uint32_t times) { receive_known(0x8906, 0, times); }},
    {"frame of an unknown port", [](uint32_t times) { receive_known(0xF0F0, 1000, times); }},
    {"FPGA reply", [](uint32_t times) { receive_known(0xFFF9, 0, times); }},
    {"50 bare driver calls", [](uint32_t times) { send_bare(TEST_FRAMES_PER_BURST * times); }},
    {"burst of 50 test frames", repeat<send_burst>},
    {"10000 bare driver calls", [](uint32_t times) { send_bare(10000 * times); }},
    {"serpentine burst of 10000", repeat<send_serpentine>},
    {"bare write", repeat<bare_reply>},
    {"reply", repeat<reply>},
    {"dispatch and reply", repeat<dispatch>},
    {"no log line", repeat<log_not_there>},
    {"log line when off", repeat<log_off>},
};

int main(int count, char **arguments)
{
    facmsg_vexa_diag_drv.send_packet = take_frame;
    facmsg_vexa_diag_drv.get_port_phyid = give_phy_id;
    if (count == 1)
        for (const auto &entry : CALLS)
            puts(entry.name);
    if (count != 3 || socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return count == 1 ? 0 : 2;
    for (const auto &entry : CALLS)
        if (strcmp(entry.name, arguments[1]) == 0) {
            entry.run(static_cast<uint32_t>(atoi(arguments[2])));
            return 0;
        }
    return 2;
}
