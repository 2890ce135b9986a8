/* SPDX-License-Identifier: MIT
 *
 * Runs the flow pressure test, which no request leads to, in the host itself.
 */
#include "flow_run.h"

#include <cerrno>
#include <system_error>
#include <vector>

#include <fmt/ranges.h>
#include <sys/socket.h>
#include <unistd.h>

#include "facmsg.h"

namespace sim
{

static std::vector<uint32_t> positions(const uint8_t (&flags)[FACMSG_MAX_PORTS])
{
    std::vector<uint32_t> set;
    for (uint32_t i = 0; i < FACMSG_MAX_PORTS; ++i) {
        if (flags[i])
            set.push_back(i + 1);
    }
    return set;
}

static void print(const flow_pressure_reply &reply)
{
    fmt::print("{{\"result\": {}, \"port_count\": {}, \"settings\": [", reply.result, reply.port_count);
    for (uint32_t r = 0; r < FACMSG_FLOW_SETTINGS; ++r) {
        const auto &speeds = reply.speed_codes[r];
        fmt::print("{}{{\"fail_stage\": {}, \"speed_codes\": [{}, {}, {}], \"port_down\": {}, \"port_fcs_err\": {}, "
                   "\"port_cnt_err\": {}}}",
                   r ? ", " : "", reply.fail_stage[r], speeds.copper, speeds.ex_copper, speeds.fiber,
                   positions(reply.port_down[r]), positions(reply.port_fcs_err[r]), positions(reply.port_cnt_err[r]));
    }
    fmt::print("]}}\n");
}

void run_flow_pressure()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    alignas(uint64_t) static uint8_t request[FACMSG_BUFFER_SIZE];
    struct {
        facmsg_header header;
        flow_pressure_reply reply;
    } answer{};
    facmsg_flow_pressure_fun(ends[0], reinterpret_cast<facmsg_request *>(request));
    const auto length = recv(ends[1], &answer, sizeof answer, MSG_WAITALL | MSG_DONTWAIT);
    close(ends[0]);
    close(ends[1]);
    if (length != sizeof answer)
        throw std::system_error(EPROTO, std::generic_category(), "flow pressure test");
    print(answer.reply);
}

} // namespace sim
