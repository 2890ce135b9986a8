/* SPDX-License-Identifier: MIT
 *
 * Ports 1 and 2 are healthy, but port 2 loses its first frames; port 3 has link in unit 0 only. Answers depend on the
 * input and nothing else, so that a finding can be repeated.
 */
#include "small_host.h"

#include <array>
#include <string_view>

#include "world.h"

static uint32_t frames_sent, calls, failing_call, readings;

/* Outputs take small values in turn, but for those that make the ports what they are. */
static void write_outputs(const driver_call &call)
{
    const std::string_view slot = call.slot;
    const uint32_t port = call.port;
    if (slot == "get_status")
        return call.write(std::array<uint64_t, 6>{0, port != 3 || call.arguments[0].word == 0, 3, 0, 2, 0});
    if (slot == "get_ability")
        return call.write(std::array<uint64_t, 2>{port <= 3 ? 0x6E000FFFu : 0, port <= 2 ? 0x5E002FFFu : 0});
    if (slot == "get_port_phyid")
        return call.write(std::array<uint64_t, 1>{port + 0x100});
    const uint64_t small = ++readings % 5;
    call.write(std::array<uint64_t, 4>{small, small / 2, small % 2, 1});
}

static void receive_again(const driver_call &call)
{
    const auto &frame = call.arguments[call.argument_count - 1];
    const pack_info info = {0, 0, call.port};
    world::clock_us += 2000; /* two bursts of a sender that goes on for 30 s */
    if (call.port != 0x102 || ++frames_sent > 5)
        vexa_recv_packet(&info, static_cast<const uint8_t *>(frame.bytes), static_cast<uint32_t>(frame.count));
}

static int answer(const driver_call &call)
{
    const std::string_view slot = call.slot;
    if (slot == "send_packet")
        receive_again(call);
    else
        write_outputs(call);
    const bool no_port = slot == "get_ability" && call.port > 3 && call.port <= 250;
    return ++calls == failing_call || no_port ? -1 : 0;
}

void small_host_start()
{
    facmsg_vexa_diag_drv = world::driver_table();
    world::on_call = answer;
}

void small_host_reset(uint8_t plan)
{
    frames_sent = calls = readings = 0;
    failing_call = plan / 2;
    facmsg_dbg = plan % 2 != 0 ? 2 : 0;
}
