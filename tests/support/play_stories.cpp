/* SPDX-License-Identifier: MIT
 *
 * Plays the stories that stories.py tells against the library: it has to bring about just those events, in that order,
 * and gets from its driver what the story says. Arguments: the stories' file, and part of a name to play only those.
 */
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "packet/transmit.h"
#include "stress_tests/stress.h"
#include "world.h"

namespace
{

/* An event that is to happen, with what the driver answers to it, or an act of the world around the library. */
struct story_line {
    std::string place;
    int count, result;
    std::vector<uint64_t> outputs;
    std::string text;
};

struct story {
    std::string name;
    int log_level;
    std::vector<story_line> lines;
};

std::string from_hex(const std::string &text)
{
    std::string bytes;
    for (size_t at = 0; at + 1 < text.size(); at += 2)
        bytes += static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16));
    return bytes;
}

/* With the names of slots and of the latest allocation, as {name}, for their addresses. */
std::string with_names(std::string text)
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
const struct {
    std::string name;
    int (*function)(uint32_t *w);
} calls[] = {
    {"pvids", [](uint32_t *w) { return vexa_port_pvid(w[1], w + 4, w[3], static_cast<uint8_t>(w[2])); }},
    {"read_buffer", [](uint32_t *w) { return vexa_fpga_buf_read(w[1], w[2], w + 5, w[3], w[4]); }},
    {"write_buffer", [](uint32_t *w) { return vexa_fpga_buf_write(w[1], w[2], w + 5, w[3], w[4]); }},
    {"frame_count", [](uint32_t *w) { return vexa_get_recv_packet_number(w[1], &w[2]); }},
    {"null_request", [](uint32_t *) { return facmsg_lib_test_main(-1, nullptr); }},
    {"chain_count", [](uint32_t *w) { return vexa_ess_serpentine_cpu_recv_packet(w[1], &w[2]); }},
    {"send_frames",
     [](uint32_t *w) {
         const port_packet_req order = {w[1], 1, 1, 0, w[2]};
         return vexa_send_packet_use_cpsp(&order);
     }},
    {"fpga_reply", [](uint32_t *w) { return memcpy(w + 1, get_fpga_data(), 128) == nullptr ? 1 : 0; }},
};

int answer(int fd, facmsg_request *request, const std::string &name)
{
    const auto payload = reinterpret_cast<uint32_t *>(request + 1);
    for (const auto &call : calls)
        if (call.name == name) {
            payload[0] = static_cast<uint32_t>(call.function(payload));
            return facmsg_send(fd, request->header.srv_type, request->header.payload_size, payload);
        }
    return name == "flow" ? facmsg_flow_pressure_fun(fd, request) : facmsg_lib_test_main(fd, request);
}

/* Plays a story in a process of its own, where the library has no past. The first event that is not told ends it. */
class player
{
  public:
    explicit player(const story &tale)
        : lines(tale.lines), log(tale.log_level, [this](const std::string &line) { event(with_names(line)); })
    {
        facmsg_vexa_diag_drv = world::driver_table();
        world::on_call = [this](const driver_call &call) { return called(call); };
        world::on_event = [this](const std::string &text) { event(text); };
    }
    void play()
    {
        for (go_to(0); at < lines.size(); go_to(at))
            ask(lines[at]);
        if (world::calls_to_failure != 0 || world::live_allocations != 0)
            differ("what was to fail was never done, or memory not freed");
    }

  private:
    [[noreturn]] void differ(const std::string &text)
    {
        const story_line expected = at < lines.size() ? lines[at] : story_line{"at the end", 1, 0, {}, "nothing more"};
        const auto first = std::mismatch(text.begin(), text.end(), expected.text.begin(), expected.text.end()).first;
        const auto from = static_cast<size_t>(std::max<ptrdiff_t>(first - text.begin() - 60, 0));
        std::cerr << expected.place << ": expected: " << expected.text.substr(from, 160)
                  << "\n  what happened: " << text.substr(from, 160) << "\n  from character " << from << std::endl;
        _exit(1);
    }
    /* To the next event. Does what the world does before it. */
    void go_to(size_t line)
    {
        for (at = line; at < lines.size() && act(lines[at]); at++)
            continue;
        left = at < lines.size() ? lines[at].count : 0;
    }
    /* False for an event. */
    static bool act(const story_line &line)
    {
        std::istringstream words(line.text);
        std::string act, value, bytes;
        unsigned number = 1;
        words >> act;
        if (act == "empty")
            return words >> value && world::empty_slot(value);
        if (act == "pass" && words >> number)
            world::clock_us += number * UINT64_C(1000000);
        else if (act == "no" && words >> value)
            world::fail(value == "memory" ? "allocation" : "gettimeofday",
                        words >> number ? static_cast<int>(number) : 1);
        else if (act == "receive" && words >> number >> value >> bytes)
            receive(number, from_hex(bytes), line.count);
        else
            return false;
        return true;
    }
    static void receive(uint32_t phy_id, const std::string &text, int count)
    {
        const pack_info info = {0, 0, phy_id};
        const std::vector<uint8_t> frame(text.begin(), text.end()); /* with nothing after its end */
        while (count-- > 0)
            vexa_recv_packet(&info, frame.data(), static_cast<uint32_t>(frame.size()));
    }
    /* The line that tells of an event. */
    const story_line &event(const std::string &text)
    {
        if (at == lines.size() || lines[at].text != text)
            differ(text);
        const story_line &line = lines[at];
        if (--left == 0)
            go_to(at + 1);
        return line;
    }
    int called(const driver_call &call)
    {
        const story_line &line = event(call.text());
        if (line.result == 0 || !line.outputs.empty())
            call.write(line.outputs);
        return line.result;
    }
    /* ask NAME REQUEST */
    void ask(const story_line &line)
    {
        std::istringstream words(line.text);
        std::string word, name, text;
        if (!(words >> word >> name >> text) || word != "ask")
            differ("the end of the request");
        const std::string request = from_hex(text);
        alignas(8) char buffer[FACMSG_BUFFER_SIZE] = {};
        std::ranges::copy(request, buffer);
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
            differ("no socket pair");
        go_to(at + 1);
        answer(ends[0], reinterpret_cast<facmsg_request *>(buffer), name);
        close(ends[0]);
        const ssize_t size = read(ends[1], buffer, sizeof(buffer));
        close(ends[1]);
        event("reply " + hex(buffer, static_cast<size_t>(std::max<ssize_t>(size, 0))));
    }

    const std::vector<story_line> &lines;
    size_t at = 0;
    int left = 0;
    log_capture log;
};

bool plays(const story &tale)
{
    const pid_t child = fork();
    if (child == 0) {
        player(tale).play();
        exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0)
        std::cerr << "FAILED at log level " << tale.log_level << ", status " << status << ": " << tale.name
                  << std::endl;
    return status == 0;
}

std::vector<story> read_stories(const char *path)
{
    std::vector<story> stories;
    std::ifstream file(path);
    for (std::string place; std::getline(file, place, '\t');)
        if (place == "story") {
            file >> stories.emplace_back().log_level;
            std::getline(file.ignore(), stories.back().name);
        } else {
            story_line &line = stories.back().lines.emplace_back();
            line.place = place;
            size_t outputs = 0;
            file >> line.count >> line.result >> outputs;
            line.outputs.resize(outputs);
            for (auto &value : line.outputs)
                file >> value;
            std::getline(file.ignore(), line.text);
        }
    return stories;
}

} // namespace

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
