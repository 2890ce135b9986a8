/* SPDX-License-Identifier: MIT */
#include "service.h"

#include <cerrno>
#include <chrono>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

#include <fmt/ranges.h>

#include "common/socket_address.h"
#include "facmsg.h"

namespace sim
{

/* A socket of this process, closed with the object. */
struct connection {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);

    connection() = default;
    connection(const connection &) = delete;
    connection &operator=(const connection &) = delete;
    ~connection()
    {
        if (fd >= 0)
            close(fd);
    }

    bool connect_to_service() const
    {
        const auto address = common::socket_address(FACMSG_SOCKET_PATH);
        return fd >= 0 && connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
};

bool service_listens()
{
    return connection().connect_to_service();
}

bool service_answers()
{
    using namespace std::chrono_literals;
    for (int attempt = 0; attempt < 1000; attempt++) {
        const connection probe;
        facmsg_header reply{};
        if (probe.connect_to_service())
            return facmsg_send(probe.fd, FACMSG_REPLY_UNKNOWN, 0, nullptr) == 0 &&
                   recv(probe.fd, &reply, sizeof reply, MSG_WAITALL) == sizeof reply;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

static std::vector<uint32_t> positions(const uint8_t (&flags)[FACMSG_MAX_PORTS])
{
    std::vector<uint32_t> set;
    for (uint32_t i = 0; i < FACMSG_MAX_PORTS; i++) {
        if (flags[i])
            set.push_back(i + 1);
    }
    return set;
}

static void print(const flow_pressure_reply &reply)
{
    fmt::print("{{\"result\": {}, \"port_count\": {}, \"settings\": [", reply.result, reply.port_count);
    for (uint32_t i = 0; i < FACMSG_FLOW_SETTINGS; i++) {
        const auto &speeds = reply.speed_codes[i];
        fmt::print("{}{{\"fail_stage\": {}, \"speed_codes\": [{}, {}, {}], \"port_down\": {}, \"port_fcs_err\": {}, "
                   "\"port_cnt_err\": {}}}",
                   i ? ", " : "", reply.fail_stage[i], speeds.copper, speeds.ex_copper, speeds.fiber,
                   positions(reply.port_down[i]), positions(reply.port_fcs_err[i]), positions(reply.port_cnt_err[i]));
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
