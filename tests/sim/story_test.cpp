/* SPDX-License-Identifier: MIT
 *
 * Plays the stories of boards.txt, whose head says how they are written.
 */
#include <cmath>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <sys/socket.h>
#include <tuple>
#include <unistd.h>

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "common/file.h"
#include "facmsg.h"
#include "internal/facmsg_slots.h"
#include "sim/board_file/board_file.h"
#include "sim/driver/driver_table.h"
#include "sim/host/host_time.h"

using namespace sim;
using words = std::deque<std::string>;

static std::string take(words &left)
{
    if (left.empty())
        return "";
    const auto first = left.front();
    left.pop_front();
    return first;
}

static uint64_t number(const std::string &text)
{
    return std::stoull(text, nullptr, 0);
}

static mac_address mac_named(const std::string &name)
{
    static const std::map<std::string, mac_address> MACS = {{"cpu", {0, 0, 0, 0, 0, 1}},
                                                            {"other", {0, 0, 0, 0, 0, 2}},
                                                            {"chain", {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
                                                            {"all", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}}};
    return MACS.at(name);
}

/* An argument of a driver call: what it is made of, what the call gets, and what it left there. */
template <class P> struct argument {
    explicit argument(words &left) : value(static_cast<P>(number(take(left)))) {}
    P get()
    {
        return value;
    }
    std::string shown() const
    {
        return "";
    }
    P value;
};

/* A MAC by its name, with enough behind it for a frame. */
template <> struct argument<const uint8_t *> : std::vector<uint8_t> {
    explicit argument(words &left) : std::vector<uint8_t>(10000)
    {
        std::ranges::copy(mac_named(take(left)), begin());
    }
    const uint8_t *get()
    {
        return data();
    }
    std::string shown() const
    {
        return "";
    }
};

/* Where the call leaves something: words that the line gives, if it does, else zeros. */
template <class T> struct argument<T *> {
    using part = std::conditional_t<
        std::is_same_v<T, ex_speed_support>, uint8_t,
        std::conditional_t<std::is_integral_v<std::remove_const_t<T>>, std::remove_const_t<T>, uint32_t>>;
    explicit argument(words &left) : given(!left.empty())
    {
        for (auto &one : parts)
            one = given && !left.empty() ? static_cast<part>(number(take(left))) : part{};
    }
    T *get()
    {
        return reinterpret_cast<T *>(parts);
    }
    std::string shown() const
    {
        return given ? "" : fmt::format(" {}", fmt::join(parts, " "));
    }
    bool given;
    alignas(8) part parts[sizeof(std::conditional_t<std::is_void_v<T>, uint32_t, T>) / sizeof(part)];
};

/* What the call left behind; its result when that is not 0. */
template <class... P> static std::string call_slot(int (*slot)(P...), words &left)
{
    std::tuple<argument<P>...> arguments{argument<P>(left)...};
    if (const int result = std::apply([&](auto &...each) { return slot(each.get()...); }, arguments))
        return std::to_string(result);
    return std::apply([&](auto &...each) { return (std::string() + ... + each.shown()); }, arguments);
}

static std::map<uint32_t, size_t> g_at_cpu; /* frames, by the phy id that came with them */

static void count_frame(const pack_info *info, const uint8_t *, uint32_t)
{
    g_at_cpu[info->phy_id]++;
}

static poe_test_reply poe_test(uint32_t type)
{
    alignas(8) char bytes[FACMSG_BUFFER_SIZE] = {};
    const facmsg_header header = {type, sizeof(poe_test_reply)};
    memcpy(bytes, &header, sizeof header);
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    EXPECT_EQ(facmsg_lib_test_main(ends[0], reinterpret_cast<facmsg_request *>(bytes)), 0);
    EXPECT_EQ(read(ends[1], bytes, sizeof bytes), ssize_t{sizeof header + sizeof(poe_test_reply)});
    close(ends[0]);
    close(ends[1]);
    poe_test_reply reply;
    memcpy(&reply, bytes + sizeof header, sizeof reply);
    return reply;
}

/* One board and what a story does to it. */
struct stage {
    explicit stage(const std::string &text)
        : switched(parse_board(text, "b", SHIPPED_BOARDS)), live(switched, 0, count_frame)
    {
        drive(live, false);
        use_board_time(live);
        facmsg_vexa_diag_drv = table;
        switched.fabric.add_cpu_mac(mac_named("cpu"));
        g_at_cpu.clear();
    }

    port &at(uint64_t number)
    {
        return *switched.find_port(static_cast<uint32_t>(number));
    }

    std::string play(words left)
    {
        const auto verb = take(left);
#define CALL(index, name, port) \
    if (verb == #name)          \
        return call_slot(table.name, left);
        FACMSG_SLOTS(CALL)
#undef CALL
        if (verb == "at")
            switched.clock.run_until(static_cast<time_us>(std::llround(std::stod(take(left)) * 1000)));
        else if (verb == "pass")
            live.wait(number(take(left)) * 1000);
        else if (verb == "send")
            send(left);
        while (verb == "loop" && !left.empty())
            EXPECT_EQ(table.port_phy_loopback(0, static_cast<uint32_t>(number(take(left))), 0), 0);
        return shown(verb, left);
    }

    void send(words &left)
    {
        auto &out = at(number(take(left)));
        const auto count = number(take(left));
        std::vector<uint8_t> bytes(128);
        std::ranges::copy(mac_named(take(left)), bytes.begin());
        if (!left.empty()) {
            bytes[12] = 0x81;
            bytes[15] = static_cast<uint8_t>(number(take(left)));
        }
        for (uint64_t i = 0; i < count; i++)
            switched.transmit(out, bytes);
    }

    std::string shown(const std::string &verb, words &left)
    {
        std::vector<std::string> parts;
        if (verb == "now" || verb == "dropped")
            return std::to_string(verb == "now" ? switched.clock.now() : switched.fabric.dropped());
        if (verb == "poe")
            return poe(static_cast<uint32_t>(number(take(left))));
        if (verb == "links")
            for (const auto &[port, config] : switched.config().ports)
                if (at(port).link)
                    parts.push_back(std::to_string(port));
        for (; verb == "counts" && !left.empty(); left.pop_front()) {
            const auto &count = at(number(left.front())).counters;
            parts.push_back(fmt::format("{} {} {}", count.in_pkts, count.ex_pkts, count.fcs_errors));
        }
        if (verb == "cpu") {
            for (const auto &frame : switched.cpu.take_frames())
                g_at_cpu[frame.info.phy_id]++;
            for (const auto &[phy_id, count] : std::exchange(g_at_cpu, {}))
                parts.push_back(fmt::format("{:#x}: {}", phy_id, count));
        }
        const bool looks = verb == "links" || verb == "counts" || verb == "cpu";
        return looks && parts.empty() ? "none" : fmt::format("{}", fmt::join(parts, verb == "links" ? " " : ", "));
    }

    std::string poe(uint32_t type)
    {
        const auto start = switched.clock.now();
        const auto reply = poe_test(type);
        std::string text =
            fmt::format("{} {} s {}", reply.result, (switched.clock.now() - start) / 1000000, reply.port_count);
        const auto code = [](uint32_t word) {
            return word >> 16 ? fmt::format("{}<<16|{}", word >> 16, word & 0xFFFF) : std::to_string(word);
        };
        for (uint32_t i = 0; i < reply.port_count; i++) {
            const auto &output = *switched.poe.find(reply.ports[i]);
            const bool high = reply.ports[i] <= 8;
            const auto codes = fmt::format("{} {} {} {}", code(reply.state_code[i]), reply.pd_class[i],
                                           code(reply.overload_code[i]), reply.power_off_code[i]);
            const bool powered = output.state() == poe_state::POWERED;
            if (!powered || codes != (high ? "0 8 0 0" : "0 4 0 0"))
                text += fmt::format("; {}: {}{}", reply.ports[i], codes,
                                    powered ? "" : fmt::format(" state {}", output.state_word() & 0xFFFF));
            EXPECT_EQ(output.limit_mw(), high ? 100000u : 30000u) << reply.ports[i];
        }
        return text;
    }

    board switched;
    live_board live;
    const vexa_diag_drv table = driver_table();
};

static std::vector<std::string> split(const std::string &text)
{
    std::vector<std::string> parts;
    std::istringstream left(text);
    for (std::string part; std::getline(left, part, ';');)
        parts.push_back(part);
    return parts;
}

static words words_of(const std::string &text)
{
    std::istringstream left(text);
    return {std::istream_iterator<std::string>(left), {}};
}

struct teller {
    std::map<std::string, std::string> bases;
    std::unique_ptr<stage> played;

    /* The file of "board BASE KEY=VALUE...; KIND KEY=VALUE...": each word is a line. */
    std::string board_text(const std::vector<std::string> &parts) const
    {
        std::string text;
        for (const auto &part : parts) {
            auto left = words_of(part);
            const auto first = take(left) == "board" ? take(left) : "";
            if (&part != &parts.front())
                text += "[[faults]]\nkind = \"" + words_of(part).front() + "\"\n";
            else
                text += bases.contains(first) ? bases.at(first) : "base = \"" + first + "\"\n";
            for (const auto &word : left)
                text += word + "\n";
        }
        return text;
    }

    std::string tell(const std::string &line)
    {
        const auto parts = split(line);
        if (line.starts_with("board ")) {
            played.reset();
            try {
                played = std::make_unique<stage>(board_text(parts));
            } catch (const common::file_error &error) {
                return error.what();
            }
            return "";
        }
        std::vector<std::string> results;
        for (const auto &part : parts)
            if (const auto result = played->play(words_of(part)); !result.empty())
                results.push_back(result.substr(result.find_first_not_of(' ')));
        return fmt::format("{}", fmt::join(results, " | "));
    }
};

TEST(story, comes_out_as_it_is_written)
{
    std::ifstream file(STORIES);
    teller stories;
    int told = 0;
    for (std::string line, story; std::getline(file, line);) {
        const auto arrow = line.find(" -> ");
        if (line.starts_with("== ")) {
            story = line;
        } else if (line.starts_with("base ")) {
            auto left = words_of(line.substr(5));
            auto &text = stories.bases[take(left)];
            for (const auto &word : left)
                text += word + "\n";
        } else if (!line.empty() && line[0] != '#') {
            const auto shown = stories.tell(line.substr(0, arrow));
            const auto expected = arrow == std::string::npos ? "" : line.substr(arrow + 4);
            const bool wrong_board = arrow != std::string::npos && line.starts_with("board ");
            EXPECT_EQ(wrong_board ? shown.substr(0, expected.size()) : shown, expected) << story << "\n" << line;
            told++;
        }
    }
    EXPECT_GT(told, 100);
}
