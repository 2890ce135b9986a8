/* SPDX-License-Identifier: MIT
 *
 * Plays the stories of boards.txt, whose head says how they are written.
 */
#include <cmath>
#include <cstring>
#include <deque>
#include <fstream>
#include <map>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "common/file.h"
#include "facmsg.h"
#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"
#include "sim/host/service.h"

using namespace sim;
using words = std::istringstream;

static std::string take(words &left)
{
    std::string word;
    left >> word;
    return word;
}

static bool is_empty(words &left)
{
    return (left >> std::ws).eof();
}

static uint32_t take_number(words &left)
{
    return static_cast<uint32_t>(std::stoull(take(left), nullptr, 0));
}

/* An address, or what a frame begins with. */
static std::vector<uint8_t> take_bytes(words &left)
{
    const std::map<std::string, std::vector<uint8_t>> names = {
        {"cpu", {0, 0, 0, 0, 0, 1}},
        {"other", {0, 0, 0, 0, 0, 2}},
        {"chain", {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"all", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"tagged", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0x81, 0, 0, 7}},
        {"answer", {0x01, 0x6B, 0xE2, 0, 0, 0x0B}},
        {"request", {0x01, 0x6B, 0xE2, 0, 0,    0x0A, 0x01, 0x6B, 0xE2, 0, 0, 0x0B, 0xFF, 0xF9,
                     0,    0,    0,    0, 0xF3, 0xF3, 0,    6,    0,    0, 0, 0,    0,    1}}};
    return names.at(take(left));
}

/* What a pointer of a driver call leads to. */
struct place {
    alignas(8) uint32_t content[2500] = {};
    size_t size = 0; /* of what the call leaves there, and of each number in it */
    size_t part = 1;
    uint8_t *const bytes = reinterpret_cast<uint8_t *>(content);
};

/* An argument of a driver call: a number, bytes by their name, or a place; with words in it when the line has some. */
template <class P> static P argument(words &left, std::deque<place> &places)
{
    if constexpr (std::is_integral_v<P>) {
        return static_cast<P>(take_number(left));
    } else {
        using T = std::conditional_t<std::is_void_v<std::remove_pointer_t<P>>, uint32_t, std::remove_pointer_t<P>>;
        auto &at = places.emplace_back();
        if (std::is_same_v<P, const uint8_t *>) {
            std::ranges::copy(take_bytes(left), at.bytes);
        } else if (is_empty(left)) {
            at.size = sizeof(T);
            at.part = std::is_integral_v<T> ? sizeof(T) : std::is_same_v<T, ex_speed_support> ? 1 : sizeof(uint32_t);
        } else {
            for (size_t i = 0; i * sizeof(uint32_t) < sizeof(T) && !is_empty(left); i++)
                at.content[i] = take_number(left);
        }
        return reinterpret_cast<P>(at.bytes);
    }
}

/* What the call left behind; its result when that is not 0. */
template <class... P> static std::string call_slot(int (*slot)(P...), words &left)
{
    std::deque<place> places;
    const std::tuple<P...> arguments{argument<P>(left, places)...};
    if (const int result = std::apply(slot, arguments))
        return std::to_string(result);
    std::vector<uint64_t> numbers;
    for (const auto &each : places) {
        for (size_t at = 0; at < each.size; at += each.part)
            memcpy(&numbers.emplace_back(0), each.bytes + at, each.part);
    }
    return fmt::format("{}", fmt::join(numbers, " "));
}

using frame_counts = std::map<uint32_t, size_t>; /* by the phy id that comes with frames */
static frame_counts g_at_cpu;

static void count_frame(const pack_info *info, const uint8_t *, uint32_t)
{
    g_at_cpu[info->phy_id]++;
}

/* Serves a request and reads its reply. */
static poe_test_reply poe_test(uint32_t type)
{
    alignas(8) char request[FACMSG_BUFFER_SIZE] = {};
    memcpy(request, &type, sizeof type);
    struct {
        facmsg_header header;
        poe_test_reply reply;
    } answer;
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    EXPECT_EQ(facmsg_lib_test_main(ends[0], reinterpret_cast<facmsg_request *>(request)), 0);
    EXPECT_EQ(read(ends[1], &answer, sizeof answer), ssize_t{sizeof answer});
    close(ends[0]);
    close(ends[1]);
    return answer.reply;
}

/* One board and what a story does to it. */
struct stage {
    explicit stage(const std::string &text) : switched(parse_board(text, "b", SHIPPED_BOARDS))
    {
        drive(live, false);
        use_board_time(live);
        facmsg_vexa_diag_drv = table;
        switched.fabric.add_cpu_mac({0, 0, 0, 0, 0, 1});
        g_at_cpu.clear();
    }

    std::string play(words &&left)
    {
        const auto verb = take(left);
#define CALL(index, name, port) \
    if (verb == #name)          \
        return call_slot(table.name, left);
        FACMSG_SLOTS(CALL)
#undef CALL
        if (verb == "at")
            live.wait(static_cast<time_us>(std::llround(std::stod(take(left)) * 1000)) - switched.clock.now());
        if (verb == "pass")
            live.wait(time_us{take_number(left)} * 1000);
        if (verb == "send")
            send(left);
        for (auto times = verb == "repeat" ? take_number(left) : 0; times > 0; times--)
            play(words(left.str().substr(static_cast<size_t>(left.tellg()))));
        while (verb == "loop" && !is_empty(left))
            EXPECT_EQ(table.port_phy_loopback(0, take_number(left), 0), 0);
        if (verb == "now" || verb == "dropped")
            return std::to_string(verb == "now" ? switched.clock.now() : switched.fabric.drops());
        return verb == "poe" ? poe(take_number(left)) : list(verb, left);
    }

    void send(words &left)
    {
        auto &out = *switched.find_port(take_number(left));
        const auto count = take_number(left);
        std::vector<uint8_t> bytes(128);
        std::ranges::copy(take_bytes(left), bytes.begin());
        if (!is_empty(left)) {
            const auto tag = take_number(left);
            bytes[12] = 0x81;
            bytes[14] = static_cast<uint8_t>(tag >> 8);
            bytes[15] = static_cast<uint8_t>(tag);
        }
        for (uint32_t i = 0; i < count; i++)
            switched.transmit(out, bytes);
    }

    std::string list(const std::string &verb, words &left)
    {
        std::vector<std::string> parts;
        for (const auto &[number, config] : switched.config().ports)
            if (verb == "links" && switched.find_port(number)->link)
                parts.push_back(std::to_string(number));
        while (verb == "counts" && !is_empty(left)) {
            const auto &count = switched.find_port(take_number(left))->counters;
            parts.push_back(fmt::format("{} {} {}", count.in_pkts, count.ex_pkts, count.fcs_errors));
        }
        for (const auto &[phy_id, count] : verb == "cpu" ? std::exchange(g_at_cpu, {}) : frame_counts())
            parts.push_back(fmt::format("{:#x}: {}", phy_id, count));
        const bool looks = verb == "links" || verb == "counts" || verb == "cpu";
        return looks && parts.empty() ? "none" : fmt::format("{}", fmt::join(parts, verb == "links" ? " " : ", "));
    }

    std::string poe(uint32_t type)
    {
        const auto start = switched.clock.now();
        const auto reply = poe_test(type);
        auto text = fmt::format("{} {} s {}", reply.result, (switched.clock.now() - start) / 1000000, reply.port_count);
        for (uint32_t i = 0; i < reply.port_count; i++) {
            const auto &output = *switched.poe.find(reply.ports[i]);
            const bool high = reply.ports[i] <= 8;
            const auto codes = fmt::format("{} {} {} {} {} {}", reply.state_code[i] & 0xFFFF, reply.pd_class[i],
                                           reply.overload_code[i] & 0xFFFF, reply.power_off_code[i],
                                           static_cast<uint32_t>(output.state()),
                                           (reply.state_code[i] | reply.overload_code[i]) >> 16);
            if (codes != (high ? "0 8 0 0 1 0" : "0 4 0 0 1 0"))
                text += fmt::format("; {}: {}", reply.ports[i], codes);
            EXPECT_EQ(output.limit_mw(), high ? 100000u : 30000u) << reply.ports[i];
        }
        return text;
    }

    board switched;
    live_board live{switched, 0, count_frame};
    const vexa_diag_drv table = driver_table();
};

struct teller {
    std::map<std::string, std::string> bases = {{"none", ""}};
    std::unique_ptr<stage> scene;

    /* The board file of "BASE KEY=VALUE...; KIND KEY=VALUE..." */
    std::string board_text(const std::string &line) const
    {
        std::string text;
        words left(line);
        for (std::string part; std::getline(left, part, ';');) {
            words settings(part);
            const auto name = take(settings);
            const bool is_fault = part.starts_with(' ');
            text += is_fault               ? "[[faults]]\nkind = \"" + name + "\"\n"
                    : bases.contains(name) ? bases.at(name)
                                           : "base = \"" + name + "\"\n";
            while (!is_empty(settings))
                text += take(settings) + "\n";
        }
        return text;
    }

    std::string play(const std::string &line) const
    {
        std::vector<std::string> results;
        words left(line);
        for (std::string part; std::getline(left, part, ';');)
            if (const auto result = scene->play(words(part)); !result.empty())
                results.push_back(result);
        return fmt::format("{}", fmt::join(results, " | "));
    }

    /* What a line shows: of commands, of a board and commands, or why there can be no such board. */
    std::string tell(const std::string &line)
    {
        if (!line.starts_with("board "))
            return play(line);
        const auto end = line.find(" :: ");
        try {
            scene = std::make_unique<stage>(board_text(line.substr(6, end - 6)));
        } catch (const common::file_error &error) {
            return error.what();
        }
        return end == std::string::npos ? "" : play(line.substr(end + 4));
    }
};

TEST(story, comes_out_as_it_is_written)
{
    std::ifstream file("boards.txt");
    ASSERT_TRUE(file.is_open());
    teller stories;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#' || line[0] == '=')
            continue;
        if (line.starts_with("base ")) {
            const auto end = line.find(' ', 5);
            stories.bases[line.substr(5, end - 5)] = stories.board_text("none" + line.substr(end));
            continue;
        }
        const auto arrow = std::min(line.find(" -> "), line.size());
        const auto expected = line.substr(std::min(arrow + 4, line.size()));
        const auto shown = stories.tell(line.substr(0, arrow));
        EXPECT_EQ(shown.starts_with("b:") ? shown.substr(0, expected.size()) : shown, expected) << line;
    }
}

TEST(board_file, loads_every_shipped_board)
{
    EXPECT_GE(boards_in(SHIPPED_BOARDS).size(), 30u);
    for (const auto &name : boards_in(SHIPPED_BOARDS))
        EXPECT_EQ(load_board(SHIPPED_BOARDS "/" + name + ".toml").name, name);
}
