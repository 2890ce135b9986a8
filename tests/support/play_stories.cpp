/* SPDX-License-Identifier: MIT
 *
 * Plays the stories that stories.py tells against the library: it has to bring about just those events, in that order,
 * and gets from its driver what the story says. Arguments: the stories' file, and part of a name to play only those.
 */
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "packet/transmit.h"
#include "stress_tests/stress.h"
#include "world.h"

/* An event that is to happen, with what the driver answers to it, or an act of the world around the library. */
struct story_line {
    std::string place;
    int count, result;
    std::vector<uint64_t> outputs;
    std::string text;
};

/* Its last line stands for no event. */
struct story {
    std::string name;
    int log_level;
    std::vector<story_line> lines;
};

/* ---- The story that this process plays ---- */

static const story_line *line; /* that is to happen next */
static int times;              /* that it is still to happen */

[[noreturn]] static void differ(const std::string &text)
{
    const auto first = std::ranges::mismatch(text, line->text).in1;
    const auto from = static_cast<size_t>(std::max<ptrdiff_t>(first - text.begin() - 60, 0));
    std::cerr << line->place << ": expected: " << line->text.substr(std::min(from, line->text.size()), 160)
              << "\n  what happened: " << text.substr(from, 160) << "\n  from character " << from << std::endl;
    _exit(1);
}

static std::string from_hex(const std::string &text)
{
    std::string bytes;
    for (size_t at = 0; at + 1 < text.size(); at += 2)
        bytes += static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16));
    return bytes;
}

static void receive(uint32_t phy_id, const std::string &text, int count)
{
    const pack_info info = {0, 0, phy_id};
    const std::vector<uint8_t> frame(text.begin(), text.end()); /* with nothing after its end */
    while (count-- > 0)
        vexa_recv_packet(&info, frame.data(), static_cast<uint32_t>(frame.size()));
}

/* Does what the world does. False for an event. */
static bool act()
{
    std::istringstream words(line->text);
    std::string act, value, bytes;
    unsigned number = 1;
    words >> act;
    if (act == "empty")
        return words >> value && world::empty_slot(value);
    if (act == "pass" && words >> number)
        world::clock_us += number * UINT64_C(1000000);
    else if (act == "no" && words >> value)
        world::fail(value == "memory" ? "allocation" : "gettimeofday", words >> number ? static_cast<int>(number) : 1);
    else if (act == "receive" && words >> number >> value >> bytes)
        receive(number, from_hex(bytes), line->count);
    else
        return false;
    return true;
}

/* To the next event, from this line on. */
static void go_to(const story_line *next)
{
    for (line = next; act(); line++)
        continue;
    times = line->count;
}

/* The line that tells of an event. The first event that is not told ends the process. */
static const story_line *event(const std::string &text)
{
    if (line->text != text)
        differ(text);
    const story_line *const told = line;
    if (--times == 0)
        go_to(line + 1);
    return told;
}

static int called(const driver_call &call)
{
    const story_line *const told = event(call.text());
    if (told->result == 0 || !told->outputs.empty())
        call.write(told->outputs);
    return told->result;
}

/* With the names of slots and of the latest allocation, as {name}, for their addresses. */
static std::string with_names(std::string text)
{
    for (size_t at = 0; (at = text.find("0x", at)) != std::string::npos; at += 2) {
        const size_t end = std::min(text.find_first_not_of("0123456789abcdef", at + 2), text.size());
        const auto name = world::name_of(static_cast<uintptr_t>(strtoull(text.c_str() + at, nullptr, 16)));
        if (!name.empty())
            text.replace(at, end - at, "{" + name + "}");
    }
    return text.ends_with("> ") ? text.substr(0, text.size() - 1) : text;
}

/* What no request leads to, with its arguments in the payload and the result in the first word. */
static const std::map<std::string, int (*)(uint32_t *)> CALLS = {
    {"pvids", [](uint32_t *w) { return vexa_port_pvid(w[1], w + 4, w[3], static_cast<uint8_t>(w[2])); }},
    {"read_buffer", [](uint32_t *w) { return vexa_fpga_buf_read(w[1], w[2], w + 5, w[3], w[4]); }},
    {"write_buffer", [](uint32_t *w) { return vexa_fpga_buf_write(w[1], w[2], w + 5, w[3], w[4]); }},
    {"frame_count", [](uint32_t *w) { return vexa_get_recv_packet_number(w[1], &w[2]); }},
    {"null_request", [](uint32_t *) { return facmsg_lib_test_main(-1, nullptr); }},
    {"chain_count", [](uint32_t *w) { return vexa_ess_serpentine_cpu_recv_packet(w[1], &w[2]); }},
    {"send_frames",
     [](uint32_t *w) {
         const port_packet_req burst = {w[1], 1, 1, 0, w[2]};
         return vexa_send_packet_use_cpsp(&burst);
     }},
    {"fpga_reply", [](uint32_t *w) { return memcpy(w + 1, get_fpga_data(), 128) == nullptr ? 1 : 0; }},
};

static int answer(int fd, facmsg_request *request, const std::string &name)
{
    const auto call = CALLS.find(name);
    if (call == CALLS.end())
        return name == "flow" ? facmsg_flow_pressure_fun(fd, request) : facmsg_lib_test_main(fd, request);
    const auto payload = reinterpret_cast<uint32_t *>(request + 1);
    payload[0] = static_cast<uint32_t>(call->second(payload));
    return facmsg_send(fd, request->header.srv_type, request->header.payload_size, payload);
}

/* ask NAME REQUEST */
static void ask()
{
    std::istringstream words(line->text);
    std::string word, name, request;
    int ends[2];
    if (!(words >> word >> name >> request) || word != "ask" || socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        differ("the end of the request");
    alignas(8) char buffer[FACMSG_BUFFER_SIZE] = {};
    std::ranges::copy(from_hex(request), buffer);
    go_to(line + 1);
    answer(ends[0], reinterpret_cast<facmsg_request *>(buffer), name);
    close(ends[0]);
    const ssize_t size = read(ends[1], buffer, sizeof(buffer));
    close(ends[1]);
    event("reply " + hex(buffer, static_cast<size_t>(std::max<ssize_t>(size, 0))));
}

static void play(const story &tale)
{
    const log_capture log(tale.log_level, [](const std::string &text) { event(with_names(text)); });
    facmsg_vexa_diag_drv = world::driver_table();
    world::on_call = called;
    world::on_event = event;
    for (go_to(tale.lines.data()); line != &tale.lines.back();)
        ask();
    if (world::calls_to_failure != 0 || world::live_allocations != 0)
        differ("what was to fail was never done, or memory not freed");
}

/* ---- All stories ---- */

/* In a process of its own, where the library has no past. */
static bool plays(const story &tale)
{
    const pid_t child = fork();
    if (child == 0) {
        play(tale);
        exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0)
        std::cerr << "FAILED at log level " << tale.log_level << ", status " << status << ": " << tale.name
                  << std::endl;
    return status == 0;
}

static std::vector<story> read_stories(const char *path)
{
    std::vector<story> stories;
    std::ifstream file(path);
    for (std::string place; std::getline(file, place, '\t');)
        if (place == "story") {
            file >> stories.emplace_back().log_level;
            std::getline(file.ignore(), stories.back().name);
        } else {
            story_line &row = stories.back().lines.emplace_back();
            size_t outputs = 0;
            file >> row.count >> row.result >> outputs;
            row.outputs.resize(outputs);
            for (auto &value : row.outputs)
                file >> value;
            std::getline(file.ignore(), row.text);
            row.place = place;
        }
    return stories;
}

int main(int count, char **arguments)
{
    static const auto &stories = *new auto(read_stories(arguments[1])); /* never cleared away: children end often */
    int played = 0, failed = 0;
    for (const auto &tale : stories)
        if (count < 3 || tale.name.find(arguments[2]) != std::string::npos) {
            played++;
            failed += !plays(tale);
        }
    std::cout << played << " played, " << failed << " failed\n";
    return failed != 0 || played == 0;
}
